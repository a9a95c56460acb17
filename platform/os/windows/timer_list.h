// The timers of one thread's windows.
#pragma once

#include <optional>
#include <vector>

#include "platform/os/windows/message_filter.h"

namespace os {

// Every timer stays on the grid of its interval, however late it is taken; what fell due meanwhile
// counts once. Moments are ticks of the clock in force, read by the caller. A timer that is due
// comes before everything that is posted after it was first seen to be. One thread at a time.
class TimerList {
 public:
  // A timer that is set already starts anew.
  void Set(HWND window, UINT id, DWORD interval_ms, DWORD now);
  // False when there is no such timer.
  bool Kill(HWND window, UINT id);
  // Kills all timers of a window.
  void Forget(HWND window);

  // Milliseconds until the first timer falls due, 0 when one is; nothing without timers.
  std::optional<DWORD> MsToNext(DWORD now);
  // Looks at the clock; `posted` counts the messages that were ever posted to the thread.
  void NoteDue(DWORD now, ULONGLONG posted);
  // The timer message that is due longest, of those that the filter lets through and that come
  // before the message posted with the number `next`.
  std::optional<Message> TakeDue(DWORD now, const MessageFilter& filter, ULONGLONG next);

 private:
  struct Timer {
    HWND m_window;
    UINT m_id;
    DWORD m_interval_ms;
    DWORD m_due;
    // How many messages had been posted when it was first seen to be due.
    std::optional<ULONGLONG> m_posted_before = std::nullopt;

    bool Is(HWND window, UINT id) const { return m_window == window && m_id == id; }
    // 0 when due.
    DWORD MsToDue(DWORD now);
  };

  std::vector<Timer> m_timers;
};

}  // namespace os
