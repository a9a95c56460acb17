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

thread_local bool thread_has_ended = false;

thread_local int awaited_works = 0;

// Makes a call that has begun, and ends it.
LRESULT Call(const Window& window, const Message& message, Activity& call) noexcept {
  LRESULT answer = 0;
  try {
    answer =
        window.m_procedure(message.m_window, message.m_message, message.m_wparam, message.m_lparam);
  } catch (const std::exception& failure) {
    ReportError(failure);
  }
  Activities::Get().End(call);
  return answer;
}

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
    const WindowTable::Taken taken = table.TakeThread(*m_queue);
    AnswerNothing(taken.m_unanswered);
    const SentMessages notices = m_queue->Close();
    table.ForgetUntold(notices);
    AnswerNothing(notices);
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

std::optional<LRESULT> CallProcedure(const Message& message, const MessageQueue& own_queue) {
  Activity call;
  call.m_called = message.m_window;
  const auto window = WindowTable::Get().BeginCall(own_queue, call);
  if (window == nullptr) return std::nullopt;
  return Call(*window, message, call);
}

void RunSent(SentMessage& sent, const MessageQueue& own_queue) {
  Activity call;
  call.m_called = sent.m_message.m_window;
  call.m_run = &sent;
  WindowTable& table = WindowTable::Get();
  auto window = std::exchange(sent.m_destroyed_window, nullptr);
  if (window == nullptr) {
    window = table.BeginCall(own_queue, call);
  } else if (!table.BeginLastCall(call)) {
    return;
  }
  MessageQueue::Answer(sent, window != nullptr ? Call(*window, sent.m_message, call) : 0);
}

AwaitedWork::AwaitedWork() {
  ++awaited_works;
}

AwaitedWork::~AwaitedWork() {
  --awaited_works;
}

bool IsAwaited() {
  const Activity* activity = Activities::Innermost();
  while (activity != nullptr && !(activity->m_run != nullptr && activity->m_run->m_is_awaited)) {
    activity = activity->m_outer;
  }
  return awaited_works > 0 || activity != nullptr;
}

void AwaitAnswer(const SentMessage& sent, MessageQueue& own_queue) {
  while (!own_queue.WaitForAnswer(sent)) {
    if (const auto incoming = own_queue.TakeSent()) RunSent(*incoming, own_queue);
  }
}

bool DestroyOwnTree(HWND root, const MessageQueue& own_queue) {
  WindowTable& table = WindowTable::Get();
  if (!table.Condemn(root)) return false;
  std::vector<HWND> path = {root};  // those that were told, each below the one before it
  CallProcedure({root, kWmDestroy, 0, 0}, own_queue);
  while (!path.empty()) {
    if (HWND child = table.CondemnChild(path.back())) {
      CallProcedure({child, kWmDestroy, 0, 0}, own_queue);
      path.push_back(child);
    } else {
      path.pop_back();
    }
  }
  AnswerNothing(table.TakeTree(root, own_queue, true).m_unanswered);
  return true;
}

bool CloseTree(HWND root, const std::shared_ptr<MessageQueue>& own_queue) {
  WindowTable::Taken taken = WindowTable::Get().TakeTree(root, *own_queue, false);
  AnswerNothing(taken.m_unanswered);
  const bool is_closed = !taken.m_handles.empty();
  const auto waiter = std::make_shared<SentMessage>();
  waiter->m_sender = own_queue;
  Activity closing;
  closing.m_closed = is_closed ? std::move(taken.m_handles) : std::vector<HWND>{root};
  closing.m_waiter = waiter.get();
  if (!Activities::Get().BeginClosing(closing)) return is_closed;
  const ActivityEnd end(closing);
  Activities::Get().AnswerAwaited();
  AwaitAnswer(*waiter, *own_queue);
  return is_closed;
}

}  // namespace os
