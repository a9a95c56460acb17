// Threads with a priority. Mutexes are the standard library's.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <thread>

#include "platform/framework/types.h"
#include "platform/os/windows/completion.h"

namespace os {

enum class ThreadPriority {
  kNormal,
  kBelowNormal,  // one step less
};

// One thread at a time, owned and joined by this. Used by one thread at a time, but for IsThis, and
// not by the thread itself.
class Thread {
 public:
  Thread() = default;
  // Joins.
  ~Thread();
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  // Runs `body` in a new thread; an exception that it lets out is reported. False, with nothing
  // started, when the system has no thread to give. Not to be called before the last one is joined.
  bool Start(std::function<void()> body, ThreadPriority priority = ThreadPriority::kNormal);
  // Returns when the body has, and what it captured has ended; at once without a thread. Meanwhile
  // the calling thread answers what is sent to its windows, so that the body may be sending; a
  // message of the body that it is answering itself gets 0 now.
  void Join();
  // The same, but messages wait meanwhile: for a body that neither sends nor waits for somebody
  // else, where the caller may hold locks under which no procedure may run.
  void JoinWithoutAnswering();
  // True from Start to Join, also when the body has returned.
  bool IsStarted() const { return m_thread.joinable(); }
  // True in the thread itself.
  bool IsThis() const { return m_id == std::this_thread::get_id(); }

 private:
  std::thread m_thread;
  std::optional<Completion> m_end;
  std::atomic<std::thread::id> m_id;
};

// Makes the n-th start of a thread from now on fail; 1 is the next one, 0 none. For tests.
void FailThreadStart(DWORD nth);

}  // namespace os
