#include "platform/os/threads/event.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/os/clock.h"

namespace os {
namespace {

// How long a wait sleeps at most before it looks at the clock again: a clock that is stepped by
// hand moves without waking anybody.
constexpr ULONGLONG kClockSliceMs = 10;

// Steps of the tick counter beyond this are backwards.
constexpr DWORD kMaxStepMs = 0x7FFFFFFF;

// Never destroyed: a host's threads may end after main has.
std::mutex& AllEvents() {
  static std::mutex& mutex = *new std::mutex;
  return mutex;
}

}  // namespace

// One thread's wait. The events know it while it lives; the lock of all events guards it.
class EventWait {
 public:
  explicit EventWait(std::span<Event* const> events) : m_events(events) {}
  // With the lock held, as all that follows.
  ~EventWait() {
    for (Event* event : m_events) std::erase(event->m_waits, this);
  }
  EventWait(const EventWait&) = delete;
  EventWait& operator=(const EventWait&) = delete;

  void Begin() {
    for (std::size_t index = m_events.size(); index-- > 0;) {
      m_events[index]->m_waits.push_back(this);
      if (m_events[index]->m_is_set) m_first_set = static_cast<DWORD>(index);
    }
  }
  void Notice(const Event* event) {
    const auto found = std::find(m_events.begin(), m_events.end(), event);
    m_first_set = std::min(m_first_set, static_cast<DWORD>(found - m_events.begin()));
    m_changed.notify_one();
  }
  // The lowest index of the events that have been set so far, or kWaitTimedOut.
  DWORD FirstSet() const { return m_first_set; }
  void Sleep(std::unique_lock<std::mutex>& lock) { m_changed.wait(lock); }
  void SleepAtMost(std::unique_lock<std::mutex>& lock, ULONGLONG milliseconds) {
    m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds));
  }

 private:
  const std::span<Event* const> m_events;
  std::condition_variable m_changed;  // waited for by one thread
  DWORD m_first_set = kWaitTimedOut;
};

void Event::Set() {
  const std::lock_guard lock(AllEvents());
  m_is_set = true;
  for (EventWait* wait : m_waits) wait->Notice(this);
}

void Event::Reset() {
  const std::lock_guard lock(AllEvents());
  m_is_set = false;
}

bool Event::IsSet() const {
  const std::lock_guard lock(AllEvents());
  return m_is_set;
}

DWORD WaitForMultipleObjects(std::span<Event* const> events, DWORD timeout_ms) {
  DWORD now = timeout_ms == kInfinite ? 0 : GetTickCount();
  ULONGLONG passed_ms = 0;
  std::unique_lock lock(AllEvents());
  EventWait wait(events);
  wait.Begin();
  while (wait.FirstSet() == kWaitTimedOut && passed_ms < timeout_ms) {
    if (timeout_ms == kInfinite) {
      wait.Sleep(lock);
      continue;
    }
    wait.SleepAtMost(lock, std::min<ULONGLONG>(timeout_ms - passed_ms, kClockSliceMs));
    // The clock may be a host's.
    lock.unlock();
    const DWORD step_ms = GetTickCount() - now;
    lock.lock();
    now += step_ms;
    if (step_ms <= kMaxStepMs) passed_ms += step_ms;
  }
  return wait.FirstSet();
}

DWORD WaitForSingleObject(Event& event, DWORD timeout_ms) {
  Event* const events[] = {&event};
  return WaitForMultipleObjects(events, timeout_ms);
}

}  // namespace os
