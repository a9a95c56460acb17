// The messages that wait for one thread.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/os/windows/message_filter.h"
#include "platform/os/windows/timer_list.h"

namespace os {

class MessageQueue;
struct Window;

// A message that another thread wants answered.
struct SentMessage {
  Message m_message;
  // Who waits; null when nobody does.
  std::shared_ptr<MessageQueue> m_sender;
  // Set when another thread has destroyed the window and its own is still to be told.
  std::shared_ptr<Window> m_destroyed_window;
  // Sent while an AwaitedWork lived, or by a procedure for such a message.
  bool m_is_awaited = false;

  // Guarded by the sender's queue.
  bool m_is_answered = false;
  LRESULT m_answer = 0;
};

using SentMessages = std::vector<std::shared_ptr<SentMessage>>;

// Any thread reaches a queue through a window of its thread and with the window table locked, so
// that nothing is queued for a window that is gone. Only the own thread takes and waits. Nothing is
// called holding the lock, and the clock is read before it is taken.
class MessageQueue {
 public:
  // From any thread.

  // False when as many messages wait as a queue holds, and for a queue that is closed.
  bool Post(const Message& message);
  // Takes the message over. False, with the message left to the caller, for a queue that is closed.
  bool Send(std::shared_ptr<SentMessage>&& sent);
  void SetTimer(HWND window, UINT timer, DWORD interval_ms, DWORD now);
  bool KillTimer(HWND window, UINT timer);
  // Drops what is queued for a window and its timers. Returns the messages sent to it, which the
  // caller answers when it holds no lock.
  SentMessages Forget(HWND window);
  // Lets the sender go on. Once for each message taken or forgotten.
  static void Answer(SentMessage& sent, LRESULT answer);

  // From the thread whose queue it is.

  // The thread ends: nothing is queued any more. Returns what nobody will run.
  SentMessages Close();
  bool IsClosed();
  void PostQuit(int exit_code);
  // The next message sent by another thread; null when there is none.
  std::shared_ptr<SentMessage> TakeSent();
  // The next message that passes: what was posted, then the quit message, then timers.
  std::optional<Message> Take(const MessageFilter& filter);
  // Returns when there may be something to take.
  void Wait();
  // Returns true when `sent`, by this thread, is answered; false when something was sent to this
  // thread, which has to be answered first.
  bool WaitForAnswer(const SentMessage& sent);

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;  // waited for by the own thread alone
  // Guarded by m_mutex.
  SentMessages m_sent;  // oldest first; seldom more than one
  std::deque<Message> m_posted;
  std::optional<int> m_exit_code;
  TimerList m_timers;
  bool m_is_closed = false;
};

}  // namespace os
