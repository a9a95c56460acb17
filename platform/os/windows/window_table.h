// All windows of the process, by handle.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "platform/os/windows/message_queue.h"
#include "platform/os/windows/windows.h"

namespace os {

// The pixels of a window. Threads that draw hold on to them while the window may end.
struct PixelBuffer {
  std::mutex m_mutex;
  // Guarded by m_mutex.
  CSize m_size;
  std::vector<BYTE> m_pixels;
};

// Held by the table and by its own thread only, so that the procedure ends in that thread, too.
struct Window {
  HWND m_handle = nullptr;
  CString m_title;
  WindowProcedure m_procedure;
  std::shared_ptr<MessageQueue> m_queue;  // of its thread
  std::shared_ptr<PixelBuffer> m_pixels = std::make_shared<PixelBuffer>();

  // Guarded by the table's lock.
  CRect m_rectangle;
  HWND m_parent = nullptr;
  std::vector<HWND> m_children;
  bool m_is_dying = false;  // being destroyed; it still answers
};

// Any thread may call. A queue's lock may be taken while the table is locked, nothing else.
class WindowTable {
 public:
  // The table of the process.
  static WindowTable& Get();

  // Gives the window a handle and links it to its parent; null when that is gone or dying.
  HWND Add(std::shared_ptr<Window> window);

  // Calls visit(Window&) with the table locked. False for a stale handle.
  template <typename Visitor>
  bool Visit(HWND handle, Visitor visit) {
    const std::lock_guard lock(m_mutex);
    Window* window = Find(handle);
    if (window == nullptr) return false;
    visit(*window);
    return true;
  }

  // The window when its thread is the one with this queue, else null.
  std::shared_ptr<Window> OfThread(HWND handle, const MessageQueue& queue);
  // Any window of that thread which is not dying; null when there is none.
  HWND AnyOfThread(const MessageQueue& queue);

  // Marks a window as dying, after which it gets no more children. False when it is stale or dying
  // already; who gets true takes it out.
  bool Condemn(HWND handle);
  // Takes a child off its parent; null when none is left.
  HWND TakeChild(HWND handle);
  // Takes a window of the calling thread out. The caller answers what was sent to it.
  SentMessages Remove(HWND handle);
  // The same for a window of another thread, which gets kWmDestroy from its loop afterwards.
  SentMessages RemoveFromOtherThread(HWND handle);

 private:
  Window* Find(HWND handle);
  std::shared_ptr<Window> TakeOut(HWND handle);

  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::unordered_map<HWND, std::shared_ptr<Window>> m_windows;
  std::uintptr_t m_last_handle = 0;
};

}  // namespace os
