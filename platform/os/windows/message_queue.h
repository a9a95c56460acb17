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
struct Activity;
struct Window;

// A message that another thread wants answered.
struct SentMessage {
  Message m_message;
  // Who waits; null when nobody does.
  std::shared_ptr<MessageQueue> m_sender;
  // Set when another thread has destroyed the window: it ends in its own thread, which may have to
  // be told.
  std::shared_ptr<Window> m_destroyed_window;
  // Sent while an AwaitedWork lived, or by a procedure for such a message.
  bool m_is_awaited = false;
  // Who is running it while the sender waits. Guarded by the lock of all activities.
  Activity* m_runner = nullptr;

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

  // False for a queue that is closed, and when as many messages wait as one holds unless `always`.
  bool Post(const Message& message, bool always);
  // Takes out what is posted and passes, and returns how many messages that were.
  UINT Remove(const MessageFilter& filter);
  // Takes the message over. False, with the message left to the caller, for a queue that is closed.
  bool Send(std::shared_ptr<SentMessage>&& sent);
  void SetTimer(HWND window, UINT timer, DWORD interval_ms, DWORD now);
  bool KillTimer(HWND window, UINT timer);
  // Drops what is queued for a window and its timers. Returns the messages sent to it, which the
  // caller answers when it holds no lock.
  SentMessages Forget(HWND window);
  // Lets the sender go on, for each message taken or forgotten; only the first answer counts.
  static void Answer(SentMessage& sent, LRESULT answer);

  // From the thread whose queue it is.

  // The thread ends: nothing is queued any more. Returns what nobody will run.
  SentMessages Close();
  bool IsClosed();
  void PostQuit(int exit_code);
  // How many messages that other threads sent are waiting.
  std::size_t CountSent();
  // The next message sent by another thread; null when there is none.
  std::shared_ptr<SentMessage> TakeSent();
  // The next message that passes: what was posted, then the quit message, then timers; but timers
  // before what was posted after they were seen to be due.
  std::optional<Message> Take(const MessageFilter& filter);
  // Returns when there may be something to take.
  void Wait();
  // Returns true when `sent`, by this thread, is answered; false when something was sent to this
  // thread, which has to be answered first.
  bool WaitForAnswer(const SentMessage& sent);

 private:
  struct PostedMessage {
    Message m_message;
    ULONGLONG m_number;
  };

  std::mutex m_mutex;
  std::condition_variable m_changed;  // waited for by the own thread alone
  // Guarded by m_mutex.
  SentMessages m_sent;  // oldest first; seldom more than one
  std::deque<PostedMessage> m_posted;
  ULONGLONG m_posted_count = 0;  // ever: the number of the next one
  std::optional<int> m_exit_code;
  TimerList m_timers;
  bool m_is_closed = false;
};

}  // namespace os
