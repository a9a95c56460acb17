// The framework's window class: a window whose messages go to members of an object.
#pragma once

#include <atomic>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"

class CWnd;

namespace os {

// One message and the member that handles it.
struct MessageMapEntry {
  UINT m_message;
  LRESULT (*m_handler)(CWnd& window, WPARAM wparam, LPARAM lparam);
};

// Makes a map's handler of a member `LRESULT Class::Member(WPARAM, LPARAM)`.
template <typename Class, LRESULT (Class::*kMember)(WPARAM, LPARAM)>
LRESULT HandleWith(CWnd& window, WPARAM wparam, LPARAM lparam);

}  // namespace os

// Creates at most one window at a time. Its messages are handled in the thread that created it;
// DestroyWindow and the queries may be called from any thread. A derived class calls DestroyWindow
// in its own destructor, before anything that its handlers use goes.
class ZEBX_API CWnd : public CObject {
 public:
  CWnd();
  // Closes the window for good.
  ~CWnd() override;
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  // Null without a window; stale when its parent or thread has ended.
  HWND GetSafeHwnd() const { return m_window; }
  // The number given to CreateChild last, 0 before.
  UINT GetDlgCtrlID() const { return m_id; }

  // Creates a window of the calling thread, never shown, with an empty rectangle, as a child of
  // `parent`. 1, or 0 with nothing changed for a parent that is null or does not exist and when
  // there is a window already; one that ended with its parent is none.
  int CreateChild(HWND parent, const CString& title, UINT id);
  // Closes the window for good, as os::CloseWindow does: afterwards no handler of this object runs
  // or will run on another thread, and its messages and timers are gone. Inside a handler of its
  // own thread the running handler goes on to its end; it may then even delete the object if it
  // touches nothing of it afterwards. 1, or 0 without a window.
  int DestroyWindow();

 protected:
  // Looks the message up in the map; what is not there goes to Default.
  virtual LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam);
  // What a window does with a message that nobody handles: nothing, 0.
  static LRESULT Default() { return 0; }
  // The handlers of this class; those of its base classes have to be among them.
  virtual std::span<const os::MessageMapEntry> GetMessageMap() const;

 private:
  std::atomic<HWND> m_window = nullptr;
  std::atomic<UINT> m_id = 0;
};

namespace os {

template <typename Class, LRESULT (Class::*kMember)(WPARAM, LPARAM)>
LRESULT HandleWith(CWnd& window, WPARAM wparam, LPARAM lparam) {
  return (static_cast<Class&>(window).*kMember)(wparam, lparam);
}

}  // namespace os
