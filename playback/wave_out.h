// Plays the speech of recorded or live frames.
#pragma once

#include <memory>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/os/sound/wave_out.h"

// A ring of buffers that a wave-out device plays. The device reports each finished buffer to the
// window; whoever handles that hands it to OnDone, and feeds more when few are queued. No lock of
// its own: its owner calls one operation at a time.
class ZEBX_API CWaveOut {
 public:
  CWaveOut();
  // Closes.
  virtual ~CWaveOut();
  CWaveOut(const CWaveOut&) = delete;
  CWaveOut& operator=(const CWaveOut&) = delete;

  // Opens the first device that plays 16-bit sound at 8 kHz. `decoder_flag` is non-zero for frames
  // of encoder type 2. 1 if it is open now or was already, or 0.
  int Open(HWND notify_window, BYTE decoder_flag);
  // Ends the sound and gives device, buffers and decoder back. Always 1.
  int Close();
  // Decodes one speech packet and queues it. 1, also for a packet without samples; 0 when closed,
  // for no data and for a damaged packet, and when the ring is full: the rest of the packet is
  // dropped then.
  int Play(const BYTE* data, int length);
  // Buffers that are queued; -1 when there are none at all.
  int GetQueuedCount() const;
  // Releases a finished buffer. 1, or 0 for another device, for a header that is none of this ring
  // (which is not read) and for one that is not done.
  int OnDone(HWAVEOUT device, os::WaveHeader* header);

  // What Open and Close do with the buffers. 1, or 0 with nothing allocated for no count or size.
  int AllocBuffers(int count, DWORD size);
  int FreeBuffers();

 private:
  // The fields follow.
};
