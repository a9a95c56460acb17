// When the frames of a channel are due, and which stretch of sound belongs to each.
#pragma once

#include <cstddef>

#include "platform/framework/types.h"

namespace zebx::zebdev {

// Frames stand on a fixed grid from the start on, so that nothing adds up; a new rate begins a grid
// at the last frame. Used by one thread at a time.
class FrameSchedule {
 public:
  static constexpr DWORD kSamplesPerSecond = 8000;

  // `now_ms` are ticks of the clock in force; the first frame is due at once.
  FrameSchedule(DWORD now_ms, DWORD frames_per_second)
      : m_last_tick_ms(now_ms), m_frames_per_second(frames_per_second) {}

  void SetRate(DWORD frames_per_second);

  // How long the next frame is off; 0 when it is due. A clock that is set back stands still.
  DWORD MsToNext(DWORD now_ms);

  struct Frame {
    ULONGLONG m_time_ms;    // since the start
    std::size_t m_samples;  // of the sound since the frame before, a second at most
  };

  // Takes the next frame, whatever the clock says.
  Frame Take();
  // Takes the latest frame that is due: those before it that nobody had time for are left out.
  Frame TakeLatest(DWORD now_ms);

 private:
  // All times are in samples, which frames are not always a whole number of.
  ULONGLONG DueOf(ULONGLONG frame) const {
    return m_base + frame * kSamplesPerSecond / m_frames_per_second;
  }
  void Follow(DWORD now_ms);

  DWORD m_last_tick_ms;
  ULONGLONG m_elapsed_ms = 0;
  DWORD m_frames_per_second;
  ULONGLONG m_base = 0;  // where the grid begins
  ULONGLONG m_next = 0;  // frame of the grid
  ULONGLONG m_last = 0;  // when the last frame taken was due
};

}  // namespace zebx::zebdev
