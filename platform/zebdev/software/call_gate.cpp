#include "platform/zebdev/software/call_gate.h"

#include <algorithm>
#include <mutex>

namespace zebx::zebdev {
namespace {

struct Waiting {
  std::thread::id m_thread;
  const CallGate* m_gate;
};

struct Waits {
  std::mutex m_mutex;
  // Guarded by m_mutex, as all gates are.
  std::vector<Waiting> m_waiting;  // a thread may wait anew while it answers a message
};

Waits& AllWaits() {
  // Never destroyed: a host's threads may end after main has.
  static Waits& waits = *new Waits;
  return waits;
}

}  // namespace

std::optional<int> CallGate::Call(DWORD type, std::uintptr_t first, std::uintptr_t second,
                                  void* packet) {
  if (!IsOpen()) return std::nullopt;
  const int answer = m_callback(m_context, type, first, second, packet);
  if (!IsOpen()) return std::nullopt;
  return answer;
}

bool CallGate::IsOpen() const {
  const std::lock_guard lock(AllWaits().m_mutex);
  return m_is_open;
}

bool CallGate::IsEmpty() const {
  const std::lock_guard lock(AllWaits().m_mutex);
  return m_inside.empty();
}

void CallGate::Close() {
  const std::lock_guard lock(AllWaits().m_mutex);
  m_is_open = false;
}

bool CallGate::WaitUntilEmpty() {
  const std::thread::id self = std::this_thread::get_id();
  Waits& waits = AllWaits();
  {
    const std::lock_guard lock(waits.m_mutex);
    if (m_inside.empty()) return true;
    if (IsWaitingForItself(self)) return false;
    waits.m_waiting.push_back({self, this});
  }
  m_is_empty.Wait();
  const std::lock_guard lock(waits.m_mutex);
  std::erase_if(waits.m_waiting, [&](const Waiting& waiting) {
    return waiting.m_thread == self && waiting.m_gate == this;
  });
  return true;
}

bool CallGate::Enter() {
  const std::lock_guard lock(AllWaits().m_mutex);
  if (m_is_open) m_inside.push_back(std::this_thread::get_id());
  return m_is_open;
}

void CallGate::Leave() {
  bool is_last = false;
  {
    const std::lock_guard lock(AllWaits().m_mutex);
    m_inside.erase(std::find(m_inside.begin(), m_inside.end(), std::this_thread::get_id()));
    is_last = !m_is_open && m_inside.empty();
  }
  if (is_last) m_is_empty.Complete();
}

bool CallGate::IsWaitingForItself(std::thread::id thread) const {
  std::vector<const CallGate*> reached = {this};
  for (std::size_t next = 0; next < reached.size(); ++next) {
    for (const std::thread::id inside : reached[next]->m_inside) {
      if (inside == thread) return true;
      for (const Waiting& waiting : AllWaits().m_waiting) {
        const bool is_new =
            std::find(reached.begin(), reached.end(), waiting.m_gate) == reached.end();
        if (waiting.m_thread == inside && is_new) reached.push_back(waiting.m_gate);
      }
    }
  }
  return false;
}

}  // namespace zebx::zebdev
