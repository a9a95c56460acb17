// Windows and messages. A window belongs to the thread that created it: only that thread's message
// loop runs its procedure. Each window has a rectangle and an off-screen picture.
#pragma once

#include <functional>

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/types.h"

namespace os {

// Messages that the system itself sends or that the library uses; the host's own start at kWmUser.
enum : UINT {
  kWmNull = 0x0000,
  kWmDestroy = 0x0002,
  kWmQuit = 0x0012,
  kWmTimer = 0x0113,
  kWmUser = 0x0400,
};

struct Message {
  HWND m_window = nullptr;
  UINT m_message = kWmNull;
  WPARAM m_wparam = 0;
  LPARAM m_lparam = 0;
};

using WindowProcedure = std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)>;

// Makes a window of the calling thread. `parent` may be null; a destroyed parent destroys its
// children. The procedure runs on the calling thread only and may create, destroy and send.
ZEBX_API HWND CreateWindow(HWND parent, const CString& title, const CRect& rectangle,
                           WindowProcedure procedure);
// Destroys a window and its children: kWmDestroy is sent first, waiting senders get 0, queued
// messages and timers are dropped. 1, or 0 for a stale handle or from another thread.
ZEBX_API int DestroyWindow(HWND window);
// Safe for any value, from any thread: handles are never used again.
ZEBX_API int IsWindow(HWND window);
// In pixels of the screen. 1, or 0 for a stale handle.
ZEBX_API int GetWindowRect(HWND window, CRect* rectangle);
ZEBX_API int MoveWindow(HWND window, const CRect& rectangle);

// Queues a message for the window's thread. 1, or 0 for a stale handle.
ZEBX_API int PostMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
// Runs the window's procedure and returns its answer: directly in the window's own thread,
// otherwise by its message loop, while the caller waits (and answers what is sent to its own
// windows). 0 for a stale handle, and when the window or its thread ends first.
ZEBX_API LRESULT SendMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
// Sends kWmTimer with `timer` as wparam every `interval_ms` of the clock in force, from the owner's
// loop; late ones are merged. 1, or 0 for a stale handle.
ZEBX_API int SetTimer(HWND window, UINT timer, DWORD interval_ms);
ZEBX_API int KillTimer(HWND window, UINT timer);

// Takes the calling thread's next message, waiting for one; sent messages are answered and timers
// fire meanwhile. 0 for the quit message, else 1.
ZEBX_API int GetMessage(Message* message);
// The same without waiting: 0 when nothing is queued.
ZEBX_API int PeekMessage(Message* message);
// Runs the window's procedure for a message taken.
ZEBX_API LRESULT DispatchMessage(const Message& message);
// Queues the quit message for the calling thread.
ZEBX_API void PostQuitMessage(int exit_code);

}  // namespace os
