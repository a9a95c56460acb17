// The operating system's tick counter, and a clock that is stepped by hand.
#pragma once

#include <atomic>

#include "platform/framework/clock.h"

namespace os {

// Milliseconds of the clock in force; wraps at 2^32. Only differences mean something.
ZEBX_API DWORD GetTickCount();

// A clock that moves only when told to. It puts itself in force when constructed and restores the
// machine's own when destroyed; one at a time. May be stepped and read from any thread.
class ZEBX_API SteppedClock final : public zebx::Clock {
 public:
  SteppedClock(DWORD wall_seconds, DWORD tick_ms);
  ~SteppedClock() override;
  SteppedClock(const SteppedClock&) = delete;
  SteppedClock& operator=(const SteppedClock&) = delete;

  DWORD TickMs() const override;
  DWORD WallSeconds() const override;

  // Moves both hands on together.
  void Advance(ULONGLONG milliseconds) { m_elapsed_ms += milliseconds; }
  // Moves both hands to `milliseconds` after the start.
  void MoveTo(ULONGLONG milliseconds) { m_elapsed_ms = milliseconds; }

 private:
  const DWORD m_start_seconds;
  const DWORD m_start_tick_ms;
  std::atomic<ULONGLONG> m_elapsed_ms = 0;
};

}  // namespace os
