// All windows of the process, by handle.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/os/windows/activities.h"
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

// Any thread may call. The locks of activities and of a queue may be taken while the table is
// locked, nothing else.
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

  // Begins the call of a window's procedure in the calling thread, which has this queue. Null, with
  // nothing begun, when it is not that window's thread.
  std::shared_ptr<Window> BeginCall(const MessageQueue& own_queue, Activity& call);
  // The same for a window that another thread destroyed. False when this thread is not to be told.
  bool BeginLastCall(Activity& call);

  // Marks a window as dying, after which it gets no more children. False when it is stale or dying
  // already; who gets true takes it out.
  bool Condemn(HWND handle);
  // The same for any child of a window that is not dying. Null when there is none.
  HWND CondemnChild(HWND handle);

  // What the caller of TakeTree does when it holds no lock.
  struct Taken {
    std::vector<HWND> m_handles;
    SentMessages m_unanswered;                   // to answer with 0
    std::vector<std::shared_ptr<Window>> m_own;  // ends with this
  };
  // Takes a window and everything below it out at once, with what is queued for them. Windows of
  // other threads end in those; with `tell` they get kWmDestroy there. Nobody is called for a
  // window any more but for that. Nothing is taken for a stale handle; without `tell`, kWmDestroy
  // does not come for it any more, either.
  Taken TakeTree(HWND root, const MessageQueue& own_queue, bool tell);
  // The same, with `tell` for others, for all windows of the calling thread, which ends.
  Taken TakeThread(const MessageQueue& own_queue);
  // The thread of these windows ended before it was told.
  void ForgetUntold(const SentMessages& notices);

 private:
  Window* Find(HWND handle);
  void TakeOut(HWND root, const MessageQueue& own_queue, bool tell, Taken& taken);

  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::unordered_map<HWND, std::shared_ptr<Window>> m_windows;
  std::unordered_set<HWND>
      m_untold;  // destroyed by other threads than theirs, which get kWmDestroy
  std::uintptr_t m_last_handle = 0;
};

}  // namespace os
