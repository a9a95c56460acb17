// Plays the speech of recorded or live frames.
#pragma once

#include <memory>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/os/sound/wave_out.h"

// A ring of buffers that a wave-out device plays. The device reports each finished buffer to the
// window; whoever handles that hands it to OnDone, and feeds more when few are queued.
//
// No lock of its own: its owner calls one operation at a time, from any thread. What it calls may
// wait for others: see waveOutReset and waveOutClose.
class ZEBX_API CWaveOut {
 public:
  CWaveOut();
  // Closes.
  virtual ~CWaveOut();
  CWaveOut(const CWaveOut&) = delete;
  CWaveOut& operator=(const CWaveOut&) = delete;

  // Opens the first device that plays 16-bit sound at 8 kHz and can be opened. `decoder_flag` is
  // non-zero for frames of encoder type 2. 1 if it is open now or was already, or 0. Where only the
  // decoder failed, the buffers stay until the next Open or the end.
  int Open(HWND notify_window, BYTE decoder_flag);
  // Ends the sound and gives device, buffers and decoder back. Always 1.
  int Close();
  // Decodes one speech packet and queues it, in several buffers where it is longer than one. 1,
  // also for a packet without samples; 0 when closed, for no data, for a packet that the decoder
  // refuses, when the device refuses a buffer, and when the ring is full: the rest of the packet is
  // dropped then.
  int Play(const BYTE* data, int length);
  // Buffers that are queued or wait for OnDone; -1 when there are none at all.
  int GetQueuedCount() const;
  // Releases a finished buffer. 1, or 0 for another device, for a header that is none of this ring
  // (which is not read) and for one that is not done.
  int OnDone(HWAVEOUT device, os::WaveHeader* header);

  // What Open and Close do with the buffers; those that are still queued are taken back first. 1,
  // or 0 with nothing allocated for no count or size and without memory.
  int AllocBuffers(int count, DWORD size);
  int FreeBuffers();

 private:
  struct Buffer;
  struct Ring;

  bool OpenDevice(HWND notify_window);
  void CloseDevice();
  // Decodes a packet that was announced with so many samples. How many it has, at most those that
  // `pcm` holds; -1 when the decoder refuses it.
  std::int64_t Decode(const BYTE* data, int length, DWORD announced, std::span<std::int16_t> pcm);
  int PlayLong(const BYTE* data, int length, DWORD announced);
  // Null when all are queued.
  Buffer* FindFree();
  // Queues what stands in the buffer.
  bool Queue(Buffer& buffer, std::size_t samples);

  HWAVEOUT m_device = nullptr;
  NxcHandle m_decoder = nullptr;
  std::unique_ptr<Ring> m_ring;
};
