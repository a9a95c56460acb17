// The callback of a started channel: who is inside it, and the wait for the last one to leave.
#pragma once

#include <optional>
#include <thread>
#include <vector>

#include "platform/os/windows/completion.h"
#include "platform/zebdev/channels.h"

namespace zebx::zebdev {

// Open from its construction until Close, which is for good. Any thread may call. One lock, the
// same for all gates, guards who is inside which and who waits for which; nobody is called while it
// is held. A gate outlives whoever is inside it or waits for it.
class CallGate {
 public:
  CallGate(NoxdevChannelProc callback, void* context) : m_callback(callback), m_context(context) {}
  CallGate(const CallGate&) = delete;
  CallGate& operator=(const CallGate&) = delete;

  // A thread's stay inside, during which it works for the channel and calls back. A thread may have
  // several.
  class Stay {
   public:
    explicit Stay(CallGate& gate) : m_gate(gate.Enter() ? &gate : nullptr) {}
    ~Stay() {
      if (m_gate != nullptr) m_gate->Leave();
    }
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;

    // False when the gate was closed: the thread must keep out.
    explicit operator bool() const { return m_gate != nullptr; }

   private:
    CallGate* const m_gate;
    const os::AwaitedWork m_work;
  };

  // Calls back and returns the answer; nothing once the gate is closed. During a stay only, which
  // after nothing has to end without touching what belongs to the channel's host.
  std::optional<int> Call(DWORD type, std::uintptr_t first, std::uintptr_t second, void* packet);

  bool IsOpen() const;
  bool IsEmpty() const;
  // From now on no call begins.
  void Close();
  // Returns true when nobody is inside the closed gate any more; the calling thread answers
  // messages while it waits. False at once, with somebody still inside, when that would be waiting
  // for itself: it is inside, or somebody inside waits for a gate, and so on, that it is inside of.
  bool WaitUntilEmpty();

 private:
  bool Enter();
  void Leave();
  bool IsWaitingForItself(std::thread::id thread) const;

  const NoxdevChannelProc m_callback;
  void* const m_context;
  os::Completion m_is_empty;  // for good
  // Guarded by the lock of all gates.
  bool m_is_open = true;
  std::vector<std::thread::id> m_inside;  // once per stay
};

}  // namespace zebx::zebdev
