#include "platform/os/windows/message_queue.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "platform/os/clock.h"

namespace os {
namespace {

// A thread that takes no messages must not fill the memory.
constexpr std::size_t kMaxPosted = 10000;

// How long a wait for a timer sleeps at most before it looks at the clock again: a clock that is
// stepped by hand moves without waking anybody.
constexpr DWORD kClockSliceMs = 10;

}  // namespace

bool MessageQueue::Post(const Message& message, bool always) {
  const std::lock_guard lock(m_mutex);
  if (m_is_closed || (m_posted.size() >= kMaxPosted && !always)) return false;
  m_posted.push_back({message, m_posted_count++});
  m_changed.notify_one();
  return true;
}

UINT MessageQueue::Remove(const MessageFilter& filter) {
  const std::lock_guard lock(m_mutex);
  return static_cast<UINT>(std::erase_if(m_posted, [&](const PostedMessage& posted) {
    return filter.Passes(posted.m_message.m_window, posted.m_message.m_message);
  }));
}

bool MessageQueue::Send(std::shared_ptr<SentMessage>&& sent) {
  const std::lock_guard lock(m_mutex);
  if (m_is_closed) return false;
  m_sent.push_back(std::move(sent));
  m_changed.notify_one();
  return true;
}

void MessageQueue::SetTimer(HWND window, UINT timer, DWORD interval_ms, DWORD now) {
  const std::lock_guard lock(m_mutex);
  m_timers.Set(window, timer, interval_ms, now);
  m_changed.notify_one();
}

bool MessageQueue::KillTimer(HWND window, UINT timer) {
  const std::lock_guard lock(m_mutex);
  return m_timers.Kill(window, timer);
}

SentMessages MessageQueue::Forget(HWND window) {
  const std::lock_guard lock(m_mutex);
  m_timers.Forget(window);
  std::erase_if(m_posted, [&](const auto& posted) { return posted.m_message.m_window == window; });
  const auto first = std::stable_partition(m_sent.begin(), m_sent.end(), [&](const auto& sent) {
    return sent->m_message.m_window != window;
  });
  SentMessages forgotten(std::make_move_iterator(first), std::make_move_iterator(m_sent.end()));
  m_sent.erase(first, m_sent.end());
  return forgotten;
}

void MessageQueue::Answer(SentMessage& sent, LRESULT answer) {
  MessageQueue* sender = sent.m_sender.get();
  if (sender == nullptr) return;
  const std::lock_guard lock(sender->m_mutex);
  if (std::exchange(sent.m_is_answered, true)) return;
  sent.m_answer = answer;
  sender->m_changed.notify_one();
}

SentMessages MessageQueue::Close() {
  const std::lock_guard lock(m_mutex);
  m_is_closed = true;
  return std::exchange(m_sent, {});
}

bool MessageQueue::IsClosed() {
  const std::lock_guard lock(m_mutex);
  return m_is_closed;
}

void MessageQueue::PostQuit(int exit_code) {
  const std::lock_guard lock(m_mutex);
  m_exit_code = exit_code;
}

std::size_t MessageQueue::CountSent() {
  const std::lock_guard lock(m_mutex);
  return m_sent.size();
}

std::shared_ptr<SentMessage> MessageQueue::TakeSent() {
  const std::lock_guard lock(m_mutex);
  if (m_sent.empty()) return nullptr;
  auto sent = std::move(m_sent.front());
  m_sent.erase(m_sent.begin());
  return sent;
}

std::optional<Message> MessageQueue::Take(const MessageFilter& filter) {
  const DWORD now = GetTickCount();
  const std::lock_guard lock(m_mutex);
  m_timers.NoteDue(now, m_posted_count);
  const auto next = std::find_if(m_posted.begin(), m_posted.end(), [&](const auto& posted) {
    return filter.Passes(posted.m_message.m_window, posted.m_message.m_message);
  });
  if (next != m_posted.end()) {
    if (const auto timer = m_timers.TakeDue(now, filter, next->m_number)) return timer;
    const Message message = next->m_message;
    m_posted.erase(next);
    return message;
  }
  if (m_exit_code && filter.Passes(nullptr, kWmQuit)) {
    const auto exit_code = std::exchange(m_exit_code, std::nullopt);
    return Message{nullptr, kWmQuit, static_cast<WPARAM>(*exit_code), 0};
  }
  return m_timers.TakeDue(now, filter, m_posted_count);
}

void MessageQueue::Wait() {
  while (true) {
    const DWORD now = GetTickCount();
    std::unique_lock lock(m_mutex);
    if (!m_sent.empty() || !m_posted.empty() || m_exit_code) return;
    const auto to_timer_ms = m_timers.MsToNext(now);
    if (to_timer_ms == DWORD{0}) return;
    if (to_timer_ms) {
      m_changed.wait_for(lock, std::chrono::milliseconds(std::min(*to_timer_ms, kClockSliceMs)));
    } else {
      m_changed.wait(lock);
    }
  }
}

bool MessageQueue::WaitForAnswer(const SentMessage& sent) {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [&] { return sent.m_is_answered || !m_sent.empty(); });
  return sent.m_is_answered;
}

}  // namespace os
