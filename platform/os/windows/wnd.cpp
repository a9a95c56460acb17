#include "platform/os/windows/wnd.h"

#include "platform/os/windows/windows.h"

CWnd::CWnd() = default;

CWnd::~CWnd() {
  DestroyWindow();
}

int CWnd::CreateChild(HWND parent, const CString& title, UINT id) {
  if (parent == nullptr) return 0;
  HWND before = m_window;
  if (before != nullptr) {
    if (os::IsWindow(before) != 0) return 0;
    os::CloseWindow(before);  // it may still be told of its end
  }
  // Nothing of the object is touched after its handler, which may have deleted it.
  HWND window =
      os::CreateWindow(parent, title, {}, [this](HWND, UINT message, WPARAM wparam, LPARAM lparam) {
        return WindowProc(message, wparam, lparam);
      });
  if (window == nullptr) return 0;
  m_id = id;
  m_window = window;
  return 1;
}

int CWnd::DestroyWindow() {
  HWND window = m_window;
  if (window == nullptr) return 0;
  const int result = os::CloseWindow(window);
  // Only now, so that whoever closes it at the same time waits, too.
  m_window.compare_exchange_strong(window, nullptr);
  return result;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wparam, LPARAM lparam) {
  for (const os::MessageMapEntry& entry : GetMessageMap()) {
    if (entry.m_message == message) return entry.m_handler(*this, wparam, lparam);
  }
  return Default();
}

std::span<const os::MessageMapEntry> CWnd::GetMessageMap() const {
  return {};
}
