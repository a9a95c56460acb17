#include "platform/os/windows/activities.h"

#include <algorithm>

namespace os {
namespace {

thread_local Activity* innermost = nullptr;

}  // namespace

Activities& Activities::Get() {
  // Never destroyed: a host's threads may end after main has.
  static Activities& activities = *new Activities;
  return activities;
}

Activity* Activities::Innermost() {
  return innermost;
}

void Activities::Push(Activity& activity) {
  activity.m_thread = std::this_thread::get_id();
  activity.m_outer = innermost;
  if (innermost != nullptr) innermost->m_inner = &activity;
  innermost = &activity;
}

void Activities::Begin(Activity& activity) {
  const std::lock_guard lock(m_mutex);
  if (activity.m_called != nullptr) m_calls.push_back(&activity);
  if (activity.m_run != nullptr) activity.m_run->m_runner = &activity;
  Push(activity);
}

void Activities::End(Activity& activity) {
  const std::lock_guard lock(m_mutex);
  innermost = activity.m_outer;
  if (innermost != nullptr) innermost->m_inner = nullptr;
  if (activity.m_run != nullptr) activity.m_run->m_runner = nullptr;
  if (activity.m_waiter != nullptr) std::erase(m_closings, &activity);
  if (activity.m_called == nullptr) return;
  std::erase(m_calls, &activity);
  if (m_closings.empty() || OutermostCall(activity.m_called) != nullptr) return;
  for (Activity* closing : m_closings) {
    const bool was_waiting = std::erase(closing->m_closed, activity.m_called) != 0;
    if (was_waiting && closing->m_closed.empty()) MessageQueue::Answer(*closing->m_waiter, 0);
  }
}

bool Activities::BeginClosing(Activity& closing) {
  const std::lock_guard lock(m_mutex);
  std::erase_if(closing.m_closed, [&](HWND window) {
    const Activity* call = OutermostCall(window);
    return call == nullptr || WaitsForThisThread(*call);
  });
  if (closing.m_closed.empty()) return false;
  m_closings.push_back(&closing);
  Push(closing);
  return true;
}

void Activities::AnswerAwaited() {
  const std::lock_guard lock(m_mutex);
  for (const Activity* activity = innermost; activity != nullptr; activity = activity->m_outer) {
    if (activity->m_run != nullptr && activity->m_run->m_is_awaited) AnswerEarly(*activity->m_run);
  }
}

Activity* Activities::OutermostCall(HWND window) const {
  const auto found = std::find_if(m_calls.begin(), m_calls.end(),
                                  [&](const Activity* call) { return call->m_called == window; });
  return found != m_calls.end() ? *found : nullptr;
}

// Whether an activity cannot end before one of this thread does. Where only the answer to a message
// keeps it, that is given here. An activity waits for those inside of it, never for outer ones.
// NOLINTNEXTLINE(misc-no-recursion): as deep as threads wait for each other
bool Activities::WaitsForThisThread(const Activity& activity) {
  if (activity.m_thread == std::this_thread::get_id()) return true;
  for (const Activity* inner = &activity; inner != nullptr; inner = inner->m_inner) {
    SentMessage* sent = inner->m_sent;
    if (sent != nullptr && sent->m_runner != nullptr && WaitsForThisThread(*sent->m_runner)) {
      AnswerEarly(*sent);
    }
    for (HWND window : inner->m_closed) {
      const Activity* call = OutermostCall(window);
      if (call != nullptr && WaitsForThisThread(*call)) return true;
    }
  }
  return false;
}

// Its sender does not wait for who runs it any more, even if it has not noticed yet.
void Activities::AnswerEarly(SentMessage& sent) {
  sent.m_runner = nullptr;
  MessageQueue::Answer(sent, 0);
}

}  // namespace os
