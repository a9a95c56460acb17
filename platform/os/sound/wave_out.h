// Wave-out: sound in buffers that a device plays at its own pace and reports to a window when they
// are done. A host may put its own functions in front of these.
//
// Any thread may call. Results are 0 for success; handles are never used again, so stale ones are
// refused for ever. What plays is a paced software device: it follows the clock in force, and a
// buffer of n bytes takes n / bytes per second. What it plays goes nowhere unless sound_control.h
// says where.
#pragma once

#include <atomic>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

// An open device. Opened and closed here, borrowed everywhere else.
using HWAVEOUT = struct ZebxWaveOut*;

namespace os {

// Sent to the window that a device was opened with when a buffer is done: wparam the device, lparam
// the address of its header. Never lost for a full queue.
inline constexpr UINT kMmWomDone = 0x3BD;

enum : UINT {
  kWaveNoError = 0,
  kWaveFailed = 1,     // told to fail: see sound_control.h
  kWaveBadDevice = 2,  // no device of this number, or it cannot be opened
  kWaveBadHandle = 5,  // a device that is not open
  kWaveNoMemory = 7,
  kWaveBadParameter = 11,
  kWaveBadFormat = 32,     // the device does not play this format
  kWaveStillPlaying = 33,  // a buffer, or a device with buffers, that is still queued
  kWaveUnprepared = 34,    // a header that was not prepared
};

// Flags of waveOutOpen.
enum : DWORD {
  kWaveFormatQuery = 0x00000001,  // ask only: nothing is opened, and the handle stays untouched
  kCallbackWindow = 0x00010000,   // `callback` is the window that is told of finished buffers
};

// Flags of a header.
enum : DWORD {
  kWaveDone = 0x01,      // the device is through with it
  kWavePrepared = 0x02,  // between waveOutPrepareHeader and waveOutUnprepareHeader
  kWaveQueued = 0x10,    // between waveOutWrite and the end of its sound
};

inline constexpr WORD kWaveFormatPcm = 1;

struct WaveFormat {
  WORD m_format_tag = kWaveFormatPcm;
  WORD m_channels = 1;
  DWORD m_samples_per_second = 8000;
  DWORD m_bytes_per_second = 16000;
  WORD m_block_align = 2;
  WORD m_bits_per_sample = 16;
  WORD m_extra_bytes = 0;
};

// One buffer of sound. The caller's: a device keeps its address from waveOutWrite until it is done,
// and copies the data at once. Prepare, write and unprepare change the flags in the calling thread;
// while the buffer is queued they are the device's, which sets kWaveDone and clears kWaveQueued in
// one step, from any thread, before it reports the buffer, and never looks at it again. Meanwhile
// others read the flags with WaveFlags and leave the rest alone.
struct WaveHeader {
  BYTE* m_data = nullptr;
  DWORD m_length = 0;  // bytes to play: whole samples
  DWORD m_recorded = 0;
  std::uintptr_t m_user = 0;
  alignas(std::atomic_ref<DWORD>::required_alignment) DWORD m_flags = 0;
  DWORD m_loops = 0;
  WaveHeader* m_next = nullptr;
  std::uintptr_t m_reserved = 0;
};

// The flags of a header, also while it is queued.
inline DWORD WaveFlags(const WaveHeader& header) {
  return std::atomic_ref(const_cast<WaveHeader&>(header).m_flags).load();
}

ZEBX_API UINT waveOutGetNumDevs();
// Opens device 0 to waveOutGetNumDevs() - 1, or asks whether it plays the format: PCM of 8 or 16
// bits, in one or two channels, of 4,000 to 192,000 samples a second. A device may be open several
// times; each opening plays for itself, on a thread of its own. `*handle` is set only on success.
// `callback` is a window for kCallbackWindow, else nothing is reported; `instance` is kept and not
// used. kWaveNoMemory, too, when there is no thread for it.
ZEBX_API UINT waveOutOpen(HWAVEOUT* handle, UINT device, const WaveFormat* format,
                          std::uintptr_t callback, std::uintptr_t instance, DWORD flags);
// `bytes` is sizeof(WaveHeader) in these three. Preparing a prepared header does nothing.
ZEBX_API UINT waveOutPrepareHeader(HWAVEOUT handle, WaveHeader* header, UINT bytes);
// Queues a prepared buffer. It begins when the one before it ends, or now when that is over.
ZEBX_API UINT waveOutWrite(HWAVEOUT handle, WaveHeader* header, UINT bytes);
// Refused while the buffer is queued; a header that is not prepared stays as it is.
ZEBX_API UINT waveOutUnprepareHeader(HWAVEOUT handle, WaveHeader* header, UINT bytes);
// Ends the sound: every queued buffer is marked done and reported. Afterwards the device has no
// buffer of the caller any more.
ZEBX_API UINT waveOutReset(HWAVEOUT handle);
// Refused while buffers are queued. Afterwards nothing is reported any more. Meanwhile what is sent
// to windows of the calling thread waits: it may hold locks.
ZEBX_API UINT waveOutClose(HWAVEOUT handle);

}  // namespace os
