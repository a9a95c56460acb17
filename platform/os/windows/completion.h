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
  // answers what others send to its windows. When it is itself answering a message, 0 is the answer
  // now, so that the sender may be the one who is waited for.
  void Wait();

 private:
  std::mutex m_mutex;
  // Guarded by m_mutex.
  bool m_is_complete = false;
  SentMessages m_waiters;  // to nobody: their answer ends the wait
};

}  // namespace os
