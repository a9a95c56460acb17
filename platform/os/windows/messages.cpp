// Sending, posting and taking messages, and the timers.
#include <memory>
#include <utility>

#include "platform/os/clock.h"
#include "platform/os/windows/window_table.h"
#include "platform/os/windows/window_thread.h"
#include "platform/os/windows/windows.h"

namespace os {
namespace {

// Those that wait already: threads that go on sending must not keep the loop from its own messages.
void RunAllSent(MessageQueue& queue) {
  for (std::size_t count = queue.CountSent(); count > 0; --count) {
    if (const auto sent = queue.TakeSent()) RunSent(*sent, queue);
  }
}

int Post(const Message& message, bool always) {
  bool posted = false;
  WindowTable::Get().Visit(message.m_window,
                           [&](Window& found) { posted = found.m_queue->Post(message, always); });
  return posted ? 1 : 0;
}

}  // namespace

int PostMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  return Post({window, message, wparam, lparam}, false);
}

int PostNotice(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  return Post({window, message, wparam, lparam}, true);
}

UINT RemoveMessages(HWND window, UINT first, UINT last) {
  UINT removed = 0;
  WindowTable::Get().Visit(window, [&](Window& found) {
    removed = found.m_queue->Remove({window, first, last});
  });
  return removed;
}

LRESULT SendMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const auto queue = ThisThreadQueue();
  if (const auto answer = CallProcedure({window, message, wparam, lparam}, *queue)) return *answer;
  const auto sent = std::make_shared<SentMessage>();
  sent->m_message = {window, message, wparam, lparam};
  sent->m_sender = queue;
  sent->m_is_awaited = IsAwaited();
  Activity sending;
  sending.m_sent = sent.get();
  Activities::Get().Begin(sending);
  const ActivityEnd end(sending);
  bool is_sent = false;
  WindowTable::Get().Visit(window, [&, copy = sent](Window& found) mutable {
    is_sent = found.m_queue->Send(std::move(copy));
  });
  if (!is_sent) return 0;
  AwaitAnswer(*sent, *queue);
  return sent->m_answer;
}

int SetTimer(HWND window, UINT timer, DWORD interval_ms) {
  const DWORD now = GetTickCount();
  const auto set = [&](Window& found) { found.m_queue->SetTimer(window, timer, interval_ms, now); };
  return WindowTable::Get().Visit(window, set) ? 1 : 0;
}

int KillTimer(HWND window, UINT timer) {
  bool killed = false;
  WindowTable::Get().Visit(
      window, [&](Window& found) { killed = found.m_queue->KillTimer(window, timer); });
  return killed ? 1 : 0;
}

int GetMessage(Message* message) {
  const auto queue = ThisThreadQueue();
  while (true) {
    RunAllSent(*queue);
    if (const auto taken = queue->Take({})) {
      *message = *taken;
      return taken->m_message != kWmQuit ? 1 : 0;
    }
    queue->Wait();
  }
}

int PeekMessage(Message* message, HWND window, UINT first, UINT last) {
  const auto queue = ThisThreadQueue();
  RunAllSent(*queue);
  const auto taken = queue->Take({window, first, last});
  if (!taken) return 0;
  *message = *taken;
  return 1;
}

LRESULT DispatchMessage(const Message& message) {
  return CallProcedure(message, *ThisThreadQueue()).value_or(0);
}

void PostQuitMessage(int exit_code) {
  ThisThreadQueue()->PostQuit(exit_code);
}

}  // namespace os
