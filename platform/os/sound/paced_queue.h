// The buffers that wait for a wave-out device to play them, and when each of them is over.
#pragma once

#include <list>
#include <optional>
#include <vector>

#include "platform/os/sound/wave_out.h"

namespace os::sound {

// A buffer that was written, with the sound as it was then.
struct WrittenBuffer {
  WaveHeader* m_header = nullptr;
  std::vector<BYTE> m_bytes;
  // Known when it is over: how much could be heard, since when, and after what silence.
  std::size_t m_heard_bytes = 0;
  ULONGLONG m_begin_ms = 0;
  ULONGLONG m_silence_ms = 0;
};
// Buffers change lists without taking memory.
using WrittenBuffers = std::list<WrittenBuffer>;

// Plays buffers back to back, each for as long as its bytes take at the format's rate. Moments are
// counted from the first buffer of a run, in bytes, so that no rounding adds up; a run ends when
// nothing is left to play. One thread at a time.
class PacedQueue {
 public:
  // `tick_ms`, here and below, is the tick of the clock in force.
  PacedQueue(const WaveFormat& format, DWORD tick_ms);

  // Appends one buffer, which begins now when nothing is left to play. To be called when TakeOver
  // has taken what is over by now.
  void Write(WrittenBuffers buffer);
  // Moves the time on and takes the buffers that are over. A tick before the last one's is that of
  // a clock that was set back: the time goes on from there.
  WrittenBuffers TakeOver(DWORD tick_ms);
  // Takes all that is left. Only of the first one, something may have been heard.
  WrittenBuffers Reset();

  bool IsEmpty() const { return m_buffers.empty(); }
  // Milliseconds until the first buffer is over; nothing without one.
  std::optional<DWORD> MsToNextEnd() const;

 private:
  void MoveTo(DWORD tick_ms);
  // Moments since the opening.
  ULONGLONG RunEndMs() const;
  ULONGLONG FirstEndMs() const;
  // Of the run, that many bytes after its beginning.
  ULONGLONG RunMomentMs(ULONGLONG bytes) const;
  // Hands the first buffer to `taken`.
  void TakeFirst(std::size_t heard_bytes, WrittenBuffers& taken);

  const DWORD m_bytes_per_second;
  const WORD m_block_align;
  DWORD m_tick_ms;         // when it was looked at last
  ULONGLONG m_now_ms = 0;  // since the opening
  ULONGLONG m_run_begin_ms = 0;
  ULONGLONG m_run_bytes = 0;   // of the run's buffers that are over
  ULONGLONG m_silence_ms = 0;  // since the last buffer of which something was heard
  WrittenBuffers m_buffers;
};

}  // namespace os::sound
