// Who opens or closes a player waits until nobody else does.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/os/windows/completion.h"

namespace zebx {

// Held by one thread at a time. No mutex: whoever has it may call out, wait, and send messages.
class OpeningGate {
 private:
  friend class OpeningTurn;

  std::mutex m_mutex;
  // Guarded by m_mutex.
  bool m_is_taken = false;
  std::thread::id m_owner;
  std::shared_ptr<os::Completion> m_turn_ends;  // made by the first who waits
};

// The gate is the calling thread's from the construction, which may wait, to the end. Meanwhile
// what others send to the thread's windows is answered. What the thread sends during its turn is
// answered with 0 when the receiver comes to wait for the turn's end.
class OpeningTurn {
 public:
  explicit OpeningTurn(OpeningGate& gate);
  ~OpeningTurn();
  OpeningTurn(const OpeningTurn&) = delete;
  OpeningTurn& operator=(const OpeningTurn&) = delete;

  // False when the calling thread had the gate already: it stays with the turn before.
  explicit operator bool() const { return m_gate != nullptr; }
  // Ends the turn early. The gate may end afterwards.
  void End();

 private:
  OpeningGate* m_gate = nullptr;
  std::optional<os::AwaitedWork> m_work;
};

}  // namespace zebx
