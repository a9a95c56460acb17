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

std::shared_ptr<Window> WindowTable::OfThread(HWND handle, const MessageQueue& queue) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_windows.find(handle);
  return found != m_windows.end() && found->second->m_queue.get() == &queue ? found->second
                                                                            : nullptr;
}

HWND WindowTable::AnyOfThread(const MessageQueue& queue) {
  const std::lock_guard lock(m_mutex);
  for (const auto& [handle, window] : m_windows) {
    if (window->m_queue.get() == &queue && !window->m_is_dying) return handle;
  }
  return nullptr;
}

bool WindowTable::Condemn(HWND handle) {
  const std::lock_guard lock(m_mutex);
  Window* window = Find(handle);
  return window != nullptr && !std::exchange(window->m_is_dying, true);
}

HWND WindowTable::TakeChild(HWND handle) {
  const std::lock_guard lock(m_mutex);
  Window* window = Find(handle);
  if (window == nullptr || window->m_children.empty()) return nullptr;
  HWND child = window->m_children.back();
  window->m_children.pop_back();
  if (Window* found = Find(child)) found->m_parent = nullptr;
  return child;
}

SentMessages WindowTable::Remove(HWND handle) {
  std::shared_ptr<Window> window;  // ends outside the lock, as its procedure may own anything
  const std::lock_guard lock(m_mutex);
  window = TakeOut(handle);
  return window != nullptr ? window->m_queue->Forget(handle) : SentMessages();
}

SentMessages WindowTable::RemoveFromOtherThread(HWND handle) {
  const std::lock_guard lock(m_mutex);
  auto notice = std::make_shared<SentMessage>();
  notice->m_message = {handle, kWmDestroy, 0, 0};
  notice->m_destroyed_window = TakeOut(handle);
  if (notice->m_destroyed_window == nullptr) return {};
  const auto queue = notice->m_destroyed_window->m_queue;
  SentMessages sent = queue->Forget(handle);
  if (!queue->Send(std::move(notice))) sent.push_back(std::move(notice));
  return sent;
}

Window* WindowTable::Find(HWND handle) {
  const auto found = m_windows.find(handle);
  return found != m_windows.end() ? found->second.get() : nullptr;
}

std::shared_ptr<Window> WindowTable::TakeOut(HWND handle) {
  auto node = m_windows.extract(handle);
  if (node.empty()) return nullptr;
  if (Window* parent = Find(node.mapped()->m_parent)) std::erase(parent->m_children, handle);
  return std::move(node.mapped());
}

}  // namespace os
