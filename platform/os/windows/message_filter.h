// Which messages a loop asks for.
#pragma once

#include "platform/os/windows/windows.h"

namespace os {

struct MessageFilter {
  HWND m_window = nullptr;  // null: of any window
  UINT m_first = 0;         // first and last 0: every message
  UINT m_last = 0;

  bool Passes(HWND window, UINT message) const {
    const bool in_range =
        (m_first == 0 && m_last == 0) || (message >= m_first && message <= m_last);
    return in_range && (m_window == nullptr || m_window == window);
  }
};

}  // namespace os
