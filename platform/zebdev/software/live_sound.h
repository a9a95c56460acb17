// Where the live sound of channels goes.
#pragma once

#include <mutex>

#include "platform/zebdev/software/virtual_channels.h"

namespace zebx::zebdev {

// Any thread may call; the lock guards the sink's address and is not held while the sink is called.
class LiveSoundOutput {
 public:
  void SetSink(LiveSound sink, void* user) {
    const std::lock_guard lock(m_mutex);
    m_sink = sink;
    m_user = user;
  }

  void Play(DWORD device, DWORD channel, std::span<const std::int16_t> samples) {
    LiveSound sink = nullptr;
    void* user = nullptr;
    {
      const std::lock_guard lock(m_mutex);
      sink = m_sink;
      user = m_user;
    }
    if (sink != nullptr) sink(user, device, channel, samples);
  }

 private:
  std::mutex m_mutex;
  // Guarded by m_mutex.
  LiveSound m_sink = nullptr;
  void* m_user = nullptr;
};

}  // namespace zebx::zebdev
