#include "playback/opening_turn.h"

#include <utility>

namespace zebx {

OpeningTurn::OpeningTurn(OpeningGate& gate) {
  std::unique_lock lock(gate.m_mutex);
  while (gate.m_is_taken) {
    if (gate.m_owner == std::this_thread::get_id()) return;
    if (!gate.m_turn_ends) gate.m_turn_ends = std::make_shared<os::Completion>();
    const std::shared_ptr<os::Completion> turn_ends = gate.m_turn_ends;
    lock.unlock();
    turn_ends->Wait();
    lock.lock();
  }
  gate.m_is_taken = true;
  gate.m_owner = std::this_thread::get_id();
  m_gate = &gate;
  m_work.emplace();
}

OpeningTurn::~OpeningTurn() {
  End();
}

void OpeningTurn::End() {
  if (m_gate == nullptr) return;
  m_work.reset();
  std::shared_ptr<os::Completion> turn_ends;
  {
    OpeningGate& gate = *std::exchange(m_gate, nullptr);
    const std::lock_guard lock(gate.m_mutex);
    gate.m_is_taken = false;
    turn_ends = std::move(gate.m_turn_ends);
  }
  if (turn_ends) turn_ends->Complete();
}

}  // namespace zebx
