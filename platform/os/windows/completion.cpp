#include "platform/os/windows/completion.h"

#include <utility>

#include "platform/os/windows/window_thread.h"

namespace os {

void Completion::Complete() {
  SentMessages waiters;
  {
    const std::lock_guard lock(m_mutex);
    m_is_complete = true;
    waiters.swap(m_waiters);
  }
  for (const auto& waiter : waiters) MessageQueue::Answer(*waiter, 0);
}

void Completion::Wait() {
  const auto queue = ThisThreadQueue();
  const auto waiter = std::make_shared<SentMessage>();
  waiter->m_sender = queue;
  {
    const std::lock_guard lock(m_mutex);
    if (m_is_complete) return;
    m_waiters.push_back(waiter);
  }
  Activities::Get().AnswerAwaited();
  AwaitAnswer(*waiter, *queue);
}

}  // namespace os
