// Waiting for another thread without keeping those waiting who send to one's windows.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "platform/os/windows/message_queue.h"

namespace os {

// Something that happens once. Any thread may call; the lock guards what stands below it.
class Completion {
 public:
  // Lets everybody go on who waits or will wait.
  void Complete();

  // Returns when Complete was called, at once when it was before. Meanwhile the calling thread
  // answers what others send to its windows. A message of an AwaitedWork that it is itself running
  // gets the answer 0 now, since the sender may be the one who is waited for.
  void Wait();

 private:
  std::mutex m_mutex;
  // Guarded by m_mutex.
  bool m_is_complete = false;
  SentMessages m_waiters;  // to nobody: their answer ends the wait
};

// Work whose end others may wait for, done by the thread in which this lives. A thread may have
// several, one inside the other.
class AwaitedWork {
 public:
  AwaitedWork();
  ~AwaitedWork();
  AwaitedWork(const AwaitedWork&) = delete;
  AwaitedWork& operator=(const AwaitedWork&) = delete;
};

}  // namespace os
