#include "platform/os/windows/window_table.h"

#include <algorithm>
#include <utility>

namespace os {

WindowTable& WindowTable::Get() {
  // Never destroyed: a host's threads may end after main has.
  static WindowTable& table = *new WindowTable;
  return table;
}

HWND WindowTable::Add(std::shared_ptr<Window> window) {
  const std::lock_guard lock(m_mutex);
  if (window->m_parent != nullptr) {
    Window* parent = Find(window->m_parent);
    if (parent == nullptr || parent->m_is_dying) return nullptr;
  }
  // A number that is never used again, in the place of an address.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  HWND handle = reinterpret_cast<HWND>(++m_last_handle);
  window->m_handle = handle;
  if (window->m_parent != nullptr) Find(window->m_parent)->m_children.push_back(handle);
  m_windows.emplace(handle, std::move(window));
  return handle;
}

std::shared_ptr<Window> WindowTable::BeginCall(const MessageQueue& own_queue, Activity& call) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_windows.find(call.m_called);
  if (found == m_windows.end() || found->second->m_queue.get() != &own_queue) return nullptr;
  Activities::Get().Begin(call);
  return found->second;
}

bool WindowTable::BeginLastCall(Activity& call) {
  const std::lock_guard lock(m_mutex);
  if (m_untold.erase(call.m_called) == 0) return false;
  Activities::Get().Begin(call);
  return true;
}

bool WindowTable::Condemn(HWND handle) {
  const std::lock_guard lock(m_mutex);
  Window* window = Find(handle);
  return window != nullptr && !std::exchange(window->m_is_dying, true);
}

HWND WindowTable::CondemnChild(HWND handle) {
  const std::lock_guard lock(m_mutex);
  Window* window = Find(handle);
  if (window == nullptr) return nullptr;
  for (HWND child : window->m_children) {
    if (!std::exchange(Find(child)->m_is_dying, true)) return child;
  }
  return nullptr;
}

WindowTable::Taken WindowTable::TakeTree(HWND root, const MessageQueue& own_queue, bool tell) {
  Taken taken;
  const std::lock_guard lock(m_mutex);
  if (!tell) m_untold.erase(root);
  TakeOut(root, own_queue, tell, taken);
  return taken;
}

WindowTable::Taken WindowTable::TakeThread(const MessageQueue& own_queue) {
  Taken taken;
  const std::lock_guard lock(m_mutex);
  std::vector<HWND> own;
  for (const auto& [handle, window] : m_windows) {
    if (window->m_queue.get() == &own_queue) own.push_back(handle);
  }
  for (HWND handle : own) TakeOut(handle, own_queue, true, taken);
  return taken;
}

void WindowTable::ForgetUntold(const SentMessages& notices) {
  const std::lock_guard lock(m_mutex);
  for (const auto& notice : notices) {
    if (notice->m_destroyed_window != nullptr) m_untold.erase(notice->m_message.m_window);
  }
}

Window* WindowTable::Find(HWND handle) {
  const auto found = m_windows.find(handle);
  return found != m_windows.end() ? found->second.get() : nullptr;
}

void WindowTable::TakeOut(HWND root, const MessageQueue& own_queue, bool tell, Taken& taken) {
  std::vector<HWND> next = {root};
  while (!next.empty()) {
    HWND handle = next.back();
    next.pop_back();
    auto node = m_windows.extract(handle);
    if (node.empty()) continue;
    auto window = std::move(node.mapped());
    if (Window* parent = Find(window->m_parent)) std::erase(parent->m_children, handle);
    next.insert(next.end(), window->m_children.begin(), window->m_children.end());
    taken.m_handles.push_back(handle);
    const auto queue = window->m_queue;
    for (auto& sent : queue->Forget(handle)) taken.m_unanswered.push_back(std::move(sent));
    if (queue.get() == &own_queue) {
      taken.m_own.push_back(std::move(window));
      continue;
    }
    auto notice = std::make_shared<SentMessage>();
    notice->m_message = {handle, kWmDestroy, 0, 0};
    notice->m_destroyed_window = std::move(window);
    if (tell) m_untold.insert(handle);
    queue->Send(std::move(notice));
  }
}

}  // namespace os
