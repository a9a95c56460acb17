// What tests and tools see and do behind the wave-out functions: where the sound goes, how many
// devices there are, which calls fail. Any thread may call.
#pragma once

#include <span>
#include <vector>

#include "platform/framework/export.h"
#include "platform/os/sound/wave_out.h"

namespace os::sound {

// Sound that a device has played: a whole buffer, or the part of one until its device was reset.
struct Piece {
  HWAVEOUT m_device = nullptr;  // each opening of a device has a handle of its own
  UINT m_number = 0;            // of the device
  WaveFormat m_format;
  // When it began, since the device was opened.
  ULONGLONG m_begin_ms = 0;
  // The silence before it, since the end of the last one: 0 while buffers follow each other.
  ULONGLONG m_silence_ms = 0;
  std::span<const BYTE> m_bytes;  // valid during the call; never empty
};

// Takes what all devices play: a sound file, a sound card. Called by one thread at a time, the
// device's own or the one that resets or closes it, and for each device in the order of its sound,
// holding the one lock that makes these calls follow each other. So a sink must not throw, reset or
// close a device, replace the sink, send messages, or wait for a thread that does.
class ZEBX_API Sink {
 public:
  virtual ~Sink();
  // Called when the piece is over, so that exactly what could be heard arrives, and before its
  // buffer is reported.
  virtual void Play(const Piece& piece) = 0;
  // The device was closed; nothing of it follows. What it played before has arrived.
  virtual void Close(HWAVEOUT device) = 0;
};

// Puts a sink in place, null for none, which is how it starts. Borrowed: when this returns, the
// former one is called no more.
ZEBX_API void SetSink(Sink* sink);

// How many devices there are from now on: 1 to begin with. Those that are open stay open.
ZEBX_API void SetDeviceCount(UINT count);

// The functions of wave_out.h.
enum class Function {
  kGetNumDevs,
  kOpen,
  kPrepareHeader,
  kWrite,
  kUnprepareHeader,
  kReset,
  kClose,
};

inline constexpr int kFunctions = 7;

// Makes the n-th call of the function from now on fail without any effect; 1 is the next one. Each
// order stands for itself, so several calls can be told to fail. The answer is kWaveFailed, and no
// devices for waveOutGetNumDevs.
ZEBX_API void FailCall(Function function, DWORD nth);

// Starts an empty journal: from now on every call is one line of the function's name and the
// numbers that go in: of waveOutOpen the device, samples a second, channels, bits a sample and
// flags, of the others the handle as the number that it is and the bytes to play. ` failed` stands
// behind a call that did not answer 0.
ZEBX_API void StartJournal();
// The lines since the last call or the start. Empty without a journal.
ZEBX_API std::vector<CString> TakeJournal();

// Puts everything of this header back to how it starts, for the next test. Open devices stay.
ZEBX_API void ResetControl();

}  // namespace os::sound
