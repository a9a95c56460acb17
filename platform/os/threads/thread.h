// Threads with a priority. Mutexes are the standard library's.
#pragma once

#include <functional>
#include <thread>

#include "platform/framework/types.h"

namespace os {

enum class ThreadPriority {
  kNormal,
  kBelowNormal,  // one step less
};

// One thread at a time, owned and joined by this. Used by one thread at a time, but for IsThis.
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
  // Returns when the body has, at once without a thread. Meanwhile the calling thread answers what
  // is sent to its windows, so that the body may be sending.
  void Join();
  // True from Start to Join, also when the body has returned.
  bool IsStarted() const;
  // True in the thread itself.
  bool IsThis() const;
};

// Makes the n-th start of a thread from now on fail; 1 is the next one, 0 none. For tests.
void FailThreadStart(DWORD nth);

}  // namespace os
