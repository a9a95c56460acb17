// What a thread has of windows: its queue, the calls into its windows' procedures, and its end.
#pragma once

#include <memory>
#include <optional>

#include "platform/os/windows/message_queue.h"
#include "platform/os/windows/window_table.h"

namespace os {

// The queue of the calling thread; a closed one while the thread ends.
std::shared_ptr<MessageQueue> ThisThreadQueue();

// Runs the procedure of a window of the calling thread, which has this queue. Nothing when the
// window is gone or of another thread. An exception goes no farther than here: it is reported, and
// the answer is 0. Not to be called holding a lock.
std::optional<LRESULT> CallProcedure(const Message& message, const MessageQueue& own_queue);

// Runs and answers one message that another thread sent.
void RunSent(SentMessage& sent, const MessageQueue& own_queue);
// True inside of an AwaitedWork, and while a message is run that was sent inside of one.
bool IsAwaited();
// Waits until `sent`, by the calling thread, is answered, and answers what is sent to its windows.
void AwaitAnswer(const SentMessage& sent, MessageQueue& own_queue);

// What DestroyWindow and CloseWindow do; the answer is theirs.
bool DestroyOwnTree(HWND root, const MessageQueue& own_queue);
bool CloseTree(HWND root, const std::shared_ptr<MessageQueue>& own_queue);

}  // namespace os
