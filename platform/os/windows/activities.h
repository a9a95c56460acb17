// What every thread is in the middle of, as far as others may have to wait for its end.
#pragma once

#include <mutex>
#include <thread>
#include <vector>

#include "platform/os/windows/message_queue.h"

namespace os {

// One thing of these three. Lives on the stack of its thread, and ends after those inside of it.
struct Activity {
  // Running the procedure of a window; for a message of another thread when that is set.
  HWND m_called = nullptr;
  SentMessage* m_run = nullptr;
  // Waiting for the answer to a message to another thread.
  SentMessage* m_sent = nullptr;
  // Closing windows: waiting until no procedure of them runs. The answer to the waiter ends that.
  std::vector<HWND> m_closed = {};
  SentMessage* m_waiter = nullptr;

  // Kept by Activities.
  std::thread::id m_thread = {};
  Activity* m_outer = nullptr;  // of the same thread
  Activity* m_inner = nullptr;
};

// Any thread may call. One lock guards all activities; a queue's lock may be taken while it is
// held, and it may be taken while the window table is locked.
class Activities {
 public:
  // Those of the process.
  static Activities& Get();

  // The calling thread's innermost; null outside of all. Its outer ones stay as long as it does.
  static Activity* Innermost();

  // Of the calling thread, inside of those that it has. The last one to begin ends first.
  void Begin(Activity& activity);
  void End(Activity& activity);

  // Begins to wait until no other thread runs a procedure of the windows in m_closed, which nobody
  // begins to run any more. Messages whose senders could not go on before this thread does are
  // answered with 0. A window is left out, for good, when its procedure waits in the same way,
  // directly or over others, for one that this thread is inside of. False, with nothing begun, when
  // there is nothing to wait for.
  bool BeginClosing(Activity& closing);
  // Answers the awaited messages with 0 that the calling thread is running, before they are done.
  void AnswerAwaited();

 private:
  Activity* OutermostCall(HWND window) const;
  bool WaitsForThisThread(const Activity& activity);
  static void AnswerEarly(SentMessage& sent);
  static void Push(Activity& activity);

  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<Activity*> m_calls;  // of all threads, an outer one before those inside of it
  std::vector<Activity*> m_closings;
};

// Ends an activity with its block.
class ActivityEnd {
 public:
  explicit ActivityEnd(Activity& activity) : m_activity(activity) {}
  ~ActivityEnd() { Activities::Get().End(m_activity); }
  ActivityEnd(const ActivityEnd&) = delete;
  ActivityEnd& operator=(const ActivityEnd&) = delete;

 private:
  Activity& m_activity;
};

}  // namespace os
