// Windows and messages. A window belongs to the thread that created it: only that thread runs its
// procedure, from its message loop. Each window has a rectangle and an off-screen picture.
//
// Any thread may call any of these operations unless they say otherwise; docs/threads.md has the
// rules by which threads wait for each other.
#pragma once

#include <functional>
#include <span>

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

// An exception that a procedure lets out is reported, and the answer is 0.
using WindowProcedure = std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)>;

// Makes a window of the calling thread, which ends with it at the latest. `parent` may be null, or
// a window of any thread; a destroyed parent destroys its children. The procedure is called and
// ends in the calling thread only and may create, destroy and send. Null without a procedure and
// for a parent that is stale or being destroyed.
ZEBX_API HWND CreateWindow(HWND parent, const CString& title, const CRect& rectangle,
                           WindowProcedure procedure);
// Destroys a window of the calling thread and everything below it: kWmDestroy goes to the window
// first, then to its children; then all of them go at once, waiting senders get 0, queued messages
// and timers are dropped. A child of another thread gets kWmDestroy afterwards, when its thread's
// loop runs next. 1, or 0 for a stale handle, from another thread, and while it is being destroyed
// already.
//
// The end of a thread destroys its windows without telling them.
ZEBX_API int DestroyWindow(HWND window);
// The same from any thread, and for good: when it returns, no procedure of the window or of one
// below it runs or will run, but for calls that the calling thread is itself inside of; nobody gets
// kWmDestroy. While it waits, the calling thread answers what is sent to its windows, and messages
// that it is itself answering get 0 when their senders could not go on otherwise. 1, or 0 for a
// stale handle; it waits then, too, for a procedure of that window that still runs.
//
// Procedures that close each other's windows: docs/threads.md.
ZEBX_API int CloseWindow(HWND window);
// Safe for any value: handles are never used again.
ZEBX_API int IsWindow(HWND window);
// The title; empty for a stale handle.
ZEBX_API CString GetWindowText(HWND window);
// In pixels of the screen, for children too: moving a parent leaves them. 1, or 0 for a stale
// handle.
ZEBX_API int GetWindowRect(HWND window, CRect* rectangle);
ZEBX_API int MoveWindow(HWND window, const CRect& rectangle);

// A window's picture: rows from the top, without gaps, of pixels of four bytes: blue, green, red
// and one that means nothing. Borrowed.
struct WindowPicture {
  CSize m_size;
  std::span<BYTE> m_pixels;
};

// Hands the picture, as large as the window and black at first and after a change of size, to
// `use`, which may draw and read until it returns. Meanwhile other users of this picture wait, so
// `use` must not send messages, wait for anybody, or ask for the picture of a window; it may post.
// 1, or 0 with `use` not called for a stale handle and for a window without area or of more than
// 16384 pixels a side.
ZEBX_API int WithWindowPicture(HWND window, const std::function<void(const WindowPicture&)>& use);

// Queues a message for the window's thread. 1, or 0 for a stale handle and when 10000 messages wait
// in that thread already.
ZEBX_API int PostMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
// The same for a message that ends a wait or frees a buffer: a full queue does not refuse it.
ZEBX_API int PostNotice(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
// Takes the window's queued messages from `first` to `last` out, all of them when both are 0, from
// any thread, and returns how many there were. Timers stay, and what is taken by the window's
// thread already is not called back.
ZEBX_API UINT RemoveMessages(HWND window, UINT first, UINT last);
// Runs the window's procedure and returns its answer: directly in the window's own thread,
// otherwise from its message loop, while the caller waits (and answers what is sent to its own
// windows). 0 for a stale handle, and when the window or its thread ends first.
ZEBX_API LRESULT SendMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

// Queues kWmTimer with `timer` as wparam every `interval_ms` (at least 1) of the clock in force;
// late ones are merged. It comes after what was posted before, when the loop first found it due,
// and before what is posted later. A timer of the same number starts anew. 1, or 0 for a stale
// handle.
ZEBX_API int SetTimer(HWND window, UINT timer, DWORD interval_ms);
// 1, or 0 when there is no such timer. A message that is taken already is not called back.
ZEBX_API int KillTimer(HWND window, UINT timer);

// Takes the calling thread's next message, waiting for one: first what was posted, then the quit
// message, then due timers, which do not wait for what is posted later. What other threads send is
// answered first and meanwhile. A clock that is stepped by hand is noticed within 10 ms. 0 for the
// quit message, else 1.
ZEBX_API int GetMessage(Message* message);
// The same without waiting: 1 for every message, 0 when there is none. With a window, or with
// message numbers from `first` to `last` unless both are 0, other messages stay queued.
ZEBX_API int PeekMessage(Message* message, HWND window = nullptr, UINT first = 0, UINT last = 0);
// Runs the window's procedure for a message taken and returns its answer; 0 for a window that is
// gone or of another thread.
ZEBX_API LRESULT DispatchMessage(const Message& message);
// Queues the quit message, with the exit code as wparam, for the calling thread.
ZEBX_API void PostQuitMessage(int exit_code);

}  // namespace os
