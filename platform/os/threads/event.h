// Events that threads wait for.
#pragma once

#include <span>
#include <vector>

#include "platform/framework/types.h"

namespace os {

// Time-out of a wait that ends with an event only.
inline constexpr DWORD kInfinite = 0xFFFFFFFF;
// The answer of a wait whose time-out passed.
inline constexpr DWORD kWaitTimedOut = 0x102;

class EventWait;

// Stays set until it is reset. Any thread may call. It may end as soon as nobody waits for it: who
// has returned from a wait knows that the thread which set the event is done with it, too.
class Event {
 public:
  Event() = default;
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  // Ends every wait that is under way, even when the event is reset right afterwards.
  void Set();
  void Reset();
  bool IsSet() const;

 private:
  friend class EventWait;

  // Guarded by the lock of all events.
  bool m_is_set = false;
  std::vector<EventWait*> m_waits;
};

// Returns when one of the events is set, with the lowest index of those that are, and leaves it as
// it is; or with kWaitTimedOut when `timeout_ms` of the clock in force have passed before. With 0
// it only looks. A clock that is stepped by hand is noticed within 10 ms; one that is set back
// takes nothing from what has passed. Messages that are sent to windows of the calling thread wait
// meanwhile.
DWORD WaitForMultipleObjects(std::span<Event* const> events, DWORD timeout_ms = kInfinite);
// 0, or kWaitTimedOut.
DWORD WaitForSingleObject(Event& event, DWORD timeout_ms = kInfinite);

}  // namespace os
