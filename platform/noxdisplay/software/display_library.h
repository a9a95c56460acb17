// The state of the display library: its streams by handle, whether its surfaces are lost, and which
// calls fail. The sources with the functions of the door find it here.
#pragma once

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "platform/framework/call_script.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/noxdisplay/software/stream.h"
#include "platform/noxdisplay/streams.h"

namespace zebx::noxdisplay {

// One per process, for any thread. The lock guards the table of streams and is held for a look-up
// or a change of it only.
class DisplayLibrary {
 public:
  static DisplayLibrary& Get();

  // Answers a call of the door: 0, or 1 when `action` answers false, runs out of memory or is told
  // to fail.
  template <typename Action, typename... Words>
  int Call(Function function, Action action, Words... words) {
    const auto guarded = [&]() -> bool {
      try {
        return action();
      } catch (const std::bad_alloc&) {
        return false;
      }
    };
    return m_script.Call(static_cast<std::size_t>(function), guarded, words...);
  }
  CallScript& Script() { return m_script; }

  NoxshowStream Add(std::shared_ptr<Stream> stream);
  // Null for a handle that was never given out, or whose stream has ended.
  std::shared_ptr<Stream> Find(NoxshowStream handle);
  // Forgets a stream when it is done.
  void ForgetDone(NoxshowStream handle, Stream& stream);
  std::size_t Streams();

  bool IsLost() const { return m_is_lost; }
  void Lose();
  void Restore() { m_is_lost = false; }

  void RefuseMode(DWORD mode, bool is_refused);
  bool IsGoodMode(DWORD mode) const;

 private:
  DisplayLibrary();

  CallScript m_script;
  std::atomic<bool> m_is_lost = false;
  std::atomic<bool> m_refuses_overlay = false;
  std::atomic<bool> m_refuses_plain = false;
  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::map<NoxshowStream, std::shared_ptr<Stream>> m_streams;
  std::uintptr_t m_last_handle = 0;
};

}  // namespace zebx::noxdisplay
