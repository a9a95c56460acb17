// The calls into players that are under way, and the wait for their end.
#pragma once

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/os/windows/completion.h"

class CDecodeWnd;

namespace zebx {

// Shared by the decode thread and by every call that is under way, since a call may end both its
// player and the decode thread. Any thread may use it; nobody is called while the lock is held.
class PlayerCalls {
 public:
  // To be called when no call into the player begins any more, because it ends. Returns when none
  // is under way on another thread; the calling thread answers what is sent to its windows
  // meanwhile. Calls of its own, in which the player is being ended, count for nobody any more:
  // another player may soon have the same address.
  void AwaitEnd(const CDecodeWnd* player);

 private:
  friend class PlayerCall;
  struct UnderWay {
    const CDecodeWnd* m_player;  // null: ended inside the call
    std::thread::id m_thread;
    std::shared_ptr<os::Completion> m_end;  // null unless somebody waits for it
  };

  // Null when no call of the player is under way on another thread.
  std::shared_ptr<os::Completion> EndOfCallElsewhere(const CDecodeWnd* player);

  void Begin(const CDecodeWnd* player);
  // The last call that the calling thread has begun.
  void End();

  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<UnderWay> m_calls;  // oldest first; a thread may have several, one inside the other
};

// One call, from its construction to its end. The thread that makes it holds no lock during the
// call, but the one under which it has found the player when the call begins. Messages that it
// sends meanwhile are answered early when their receiver waits for its end.
class PlayerCall {
 public:
  PlayerCall(std::shared_ptr<PlayerCalls> calls, const CDecodeWnd* player);
  ~PlayerCall();
  PlayerCall(const PlayerCall&) = delete;
  PlayerCall& operator=(const PlayerCall&) = delete;

 private:
  const std::shared_ptr<PlayerCalls> m_calls;
  const os::AwaitedWork m_work;
};

}  // namespace zebx
