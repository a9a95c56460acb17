#include "platform/os/windows/window_thread.h"

#include <exception>
#include <utility>
#include <vector>

#include "platform/framework/error_report.h"
#include "platform/os/windows/completion.h"

using namespace zebx;

namespace os {
namespace {

void AnswerNothing(const SentMessages& messages) {
  for (const auto& sent : messages) MessageQueue::Answer(*sent, 0);
}

// Marks a window as dying and, with `tell`, lets one of this thread know. False as DestroyTree.
bool BeginDestroying(HWND handle, const MessageQueue& own_queue, bool tell) {
  WindowTable& table = WindowTable::Get();
  if (!table.Condemn(handle)) return false;
  const auto own = tell ? table.OfThread(handle, own_queue) : nullptr;
  if (own != nullptr) CallProcedure(*own, {handle, kWmDestroy, 0, 0});
  return true;
}

thread_local bool thread_has_ended = false;

// A message that the thread is running for another one, inside another such message.
struct RunningMessage {
  SentMessage* m_unanswered;  // null once it is answered
  RunningMessage* m_outer;
  bool m_is_awaited;
};

thread_local RunningMessage* running_message = nullptr;
thread_local int awaited_works = 0;

// Ends with its thread.
struct ThreadWindows {
  const std::shared_ptr<MessageQueue> m_queue = std::make_shared<MessageQueue>();

  ThreadWindows() = default;
  ThreadWindows(const ThreadWindows&) = delete;
  ThreadWindows& operator=(const ThreadWindows&) = delete;
  // The procedures are not told: what they refer to may have ended with the thread's function.
  ~ThreadWindows() {
    thread_has_ended = true;
    WindowTable& table = WindowTable::Get();
    while (HWND window = table.AnyOfThread(*m_queue)) DestroyTree(window, *m_queue, false);
    AnswerNothing(m_queue->Close());
  }
};

}  // namespace

std::shared_ptr<MessageQueue> ThisThreadQueue() {
  if (thread_has_ended) {
    auto closed = std::make_shared<MessageQueue>();
    closed->Close();
    return closed;
  }
  thread_local const ThreadWindows windows;
  return windows.m_queue;
}

LRESULT CallProcedure(const Window& window, const Message& message) noexcept {
  try {
    return window.m_procedure(window.m_handle, message.m_message, message.m_wparam,
                              message.m_lparam);
  } catch (const std::exception& failure) {
    ReportError(failure);
    return 0;
  }
}

void RunSent(SentMessage& sent, const MessageQueue& queue) {
  auto window = std::exchange(sent.m_destroyed_window, nullptr);
  if (window == nullptr) window = WindowTable::Get().OfThread(sent.m_message.m_window, queue);
  RunningMessage running{&sent, running_message, sent.m_is_awaited};
  running_message = &running;
  const LRESULT answer = window != nullptr ? CallProcedure(*window, sent.m_message) : 0;
  running_message = running.m_outer;
  if (running.m_unanswered != nullptr) MessageQueue::Answer(sent, answer);
}

AwaitedWork::AwaitedWork() {
  ++awaited_works;
}

AwaitedWork::~AwaitedWork() {
  --awaited_works;
}

bool IsAwaited() {
  const RunningMessage* running = running_message;
  while (running != nullptr && !running->m_is_awaited) running = running->m_outer;
  return awaited_works > 0 || running != nullptr;
}

void AnswerEarly() {
  for (RunningMessage* running = running_message; running != nullptr; running = running->m_outer) {
    if (!running->m_is_awaited) continue;
    SentMessage* sent = std::exchange(running->m_unanswered, nullptr);
    if (sent != nullptr) MessageQueue::Answer(*sent, 0);
  }
}

void AwaitAnswer(const SentMessage& sent, MessageQueue& queue) {
  while (!queue.WaitForAnswer(sent)) {
    if (const auto incoming = queue.TakeSent()) RunSent(*incoming, queue);
  }
}

bool DestroyTree(HWND root, const MessageQueue& own_queue, bool tell) {
  WindowTable& table = WindowTable::Get();
  if (!BeginDestroying(root, own_queue, tell)) return false;
  std::vector<HWND> path = {root};  // what is being destroyed, each below the one before it
  while (!path.empty()) {
    HWND window = path.back();
    if (HWND child = table.TakeChild(window)) {
      if (BeginDestroying(child, own_queue, tell)) path.push_back(child);
      continue;
    }
    path.pop_back();
    const bool is_own = table.OfThread(window, own_queue) != nullptr;
    AnswerNothing(is_own ? table.Remove(window) : table.RemoveFromOtherThread(window));
  }
  return true;
}

}  // namespace os
