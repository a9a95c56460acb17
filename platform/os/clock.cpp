#include "platform/os/clock.h"

using namespace zebx;

namespace os {

DWORD GetTickCount() {
  return CurrentClock().TickMs();
}

SteppedClock::SteppedClock(DWORD wall_seconds, DWORD tick_ms)
    : m_start_seconds(wall_seconds), m_start_tick_ms(tick_ms) {
  SetClock(this);
}

SteppedClock::~SteppedClock() {
  SetClock(nullptr);
}

DWORD SteppedClock::TickMs() const {
  return m_start_tick_ms + static_cast<DWORD>(m_elapsed_ms);
}

DWORD SteppedClock::WallSeconds() const {
  return m_start_seconds + static_cast<DWORD>(m_elapsed_ms / 1000);
}

}  // namespace os
