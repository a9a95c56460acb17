#include "platform/zebdev/software/run_turn.h"

#include <utility>

namespace zebx::zebdev {

bool RunTurn::TakeForFrame() {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_holder != Holder::kOther; });
  if (m_holder == Holder::kFrame) return false;
  m_holder = Holder::kFrame;
  return true;
}

void RunTurn::FrameIsSeen() {
  const std::lock_guard lock(m_mutex);
  m_is_seen = true;
  m_changed.notify_all();
}

bool RunTurn::TakeForLook() {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_holder == Holder::kNobody || m_is_seen; });
  if (m_holder != Holder::kNobody) return false;
  m_holder = Holder::kOther;
  return true;
}

bool RunTurn::TakeForRedrawing() {
  const std::lock_guard lock(m_mutex);
  if (m_holder != Holder::kNobody) {
    m_wants_redrawing = true;
    return false;
  }
  m_holder = Holder::kOther;
  return true;
}

bool RunTurn::Release() {
  const std::lock_guard lock(m_mutex);
  if (std::exchange(m_wants_redrawing, false)) return false;
  m_holder = Holder::kNobody;
  m_is_seen = false;
  m_changed.notify_all();
  return true;
}

}  // namespace zebx::zebdev
