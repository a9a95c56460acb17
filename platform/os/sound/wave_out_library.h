// The state behind the wave-out functions: how many devices there are, which are open, and which
// calls fail.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

#include "platform/framework/call_script.h"
#include "platform/os/sound/wave_device.h"

namespace os::sound {

// One per process, for any thread. The lock guards the table of open devices and is held for a
// look-up or a change of it only.
class WaveOutLibrary {
 public:
  static WaveOutLibrary& Get();

  // Answers a call with what `action` answers, kWaveNoMemory when it runs out of memory, or
  // kWaveFailed when it was to fail.
  template <typename Action, typename... Words>
  UINT Call(Function function, Action action, Words... words) {
    UINT result = kWaveFailed;
    const auto guarded = [&] {
      try {
        result = action();
      } catch (const std::bad_alloc&) {
        result = kWaveNoMemory;
      }
      return result == kWaveNoError;
    };
    m_script.Call(static_cast<std::size_t>(function), guarded, words...);
    return result;
  }
  zebx::CallScript& Script() { return m_script; }

  UINT Devices() const { return m_devices; }
  void SetDevices(UINT count) { m_devices = count; }
  void SetSink(Sink* sink);

  // Starts a device that reports to `window`; null without a thread for it.
  HWAVEOUT Open(UINT number, const WaveFormat& format, HWND window);
  // Null for a handle that is not open.
  std::shared_ptr<WaveDevice> Find(HWAVEOUT handle);
  UINT Close(HWAVEOUT handle);

 private:
  WaveOutLibrary();

  zebx::CallScript m_script;
  SoundOutlet m_outlet;
  std::atomic<UINT> m_devices = 1;
  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::unordered_map<HWAVEOUT, std::shared_ptr<WaveDevice>> m_open;
  std::uintptr_t m_last_handle = 0;
};

}  // namespace os::sound
