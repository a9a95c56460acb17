#include "platform/os/windows/timer_list.h"

#include <algorithm>

namespace os {
namespace {

// Half the range of the tick counter: as far as later can be told from earlier.
constexpr DWORD kMaxIntervalMs = 0x7FFFFFFF;

}  // namespace

DWORD TimerList::Timer::MsToDue(DWORD now) {
  const DWORD ahead_ms = m_due - now;
  if (ahead_ms > kMaxIntervalMs) return 0;
  // Farther away than it can be: the clock was set back or replaced.
  if (ahead_ms > m_interval_ms) m_due = now + m_interval_ms;
  return m_due - now;
}

void TimerList::Set(HWND window, UINT id, DWORD interval_ms, DWORD now) {
  Kill(window, id);
  const DWORD interval = std::clamp<DWORD>(interval_ms, 1, kMaxIntervalMs);
  m_timers.push_back({window, id, interval, now + interval});
}

bool TimerList::Kill(HWND window, UINT id) {
  return std::erase_if(m_timers, [&](const Timer& timer) { return timer.Is(window, id); }) != 0;
}

void TimerList::Forget(HWND window) {
  std::erase_if(m_timers, [&](const Timer& timer) { return timer.m_window == window; });
}

std::optional<DWORD> TimerList::MsToNext(DWORD now) {
  std::optional<DWORD> next;
  for (Timer& timer : m_timers) {
    const DWORD ms = timer.MsToDue(now);
    next = std::min(next.value_or(ms), ms);
  }
  return next;
}

void TimerList::NoteDue(DWORD now, ULONGLONG posted) {
  for (Timer& timer : m_timers) {
    if (timer.MsToDue(now) != 0) {
      timer.m_posted_before.reset();
    } else if (!timer.m_posted_before) {
      timer.m_posted_before = posted;
    }
  }
}

std::optional<Message> TimerList::TakeDue(DWORD now, const MessageFilter& filter, ULONGLONG next) {
  Timer* first = nullptr;
  DWORD first_late_ms = 0;
  for (Timer& timer : m_timers) {
    const bool is_next = timer.m_posted_before && *timer.m_posted_before <= next;
    if (!is_next || !filter.Passes(timer.m_window, kWmTimer)) continue;
    const DWORD late_ms = now - timer.m_due;
    if (first == nullptr || late_ms > first_late_ms) {
      first = &timer;
      first_late_ms = late_ms;
    }
  }
  if (first == nullptr) return std::nullopt;
  first->m_due += first->m_interval_ms * (first_late_ms / first->m_interval_ms + 1);
  first->m_posted_before.reset();
  return Message{first->m_window, kWmTimer, first->m_id, 0};
}

}  // namespace os
