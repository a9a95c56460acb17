// One opening of a wave-out device.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "platform/os/sound/paced_queue.h"
#include "platform/os/sound/sound_control.h"
#include "platform/os/threads/thread.h"

namespace os::sound {

// Where the sound of all devices goes. The lock guards the sink, and is held while that is called
// and while buffers are reported, so that both keep the order in which the buffers were over.
struct SoundOutlet {
  std::mutex m_mutex;
  Sink* m_sink = nullptr;
};

// Plays what is written on a thread of its own, which hands the sound of finished buffers to the
// sink and reports them. Any thread may call. m_mutex guards what is played; the outlet's lock is
// taken before it.
class WaveDevice {
 public:
  // Reports to `window`, or nobody when that is null. `outlet` is borrowed.
  WaveDevice(HWAVEOUT handle, UINT number, const WaveFormat& format, HWND window,
             SoundOutlet& outlet);
  ~WaveDevice();
  WaveDevice(const WaveDevice&) = delete;
  WaveDevice& operator=(const WaveDevice&) = delete;

  // To be called once. False when there is no thread.
  bool Start();

  UINT Write(WaveHeader& header);
  // Returns when everything was reported.
  void Reset();
  // Refuses every further buffer from now on. kWaveStillPlaying while there are any, and
  // kWaveBadHandle the second time.
  UINT Shut();
  // Ends the thread, once it is shut, and tells the sink. Answers no messages meanwhile.
  void End();

 private:
  void Run();
  // Hands over what is over, one buffer after the other.
  void Deliver();
  // The next buffer to hand over, if there is one.
  WrittenBuffers TakeOver();
  // The lock of m_mutex, with what is over by now finished.
  std::unique_lock<std::mutex> LockAtNow();
  // Takes buffers out of the hands of the device.
  void Finish(WrittenBuffers buffers);
  // For the thread: false when it is to end, else true when it is to look again.
  bool WaitForNext();
  void Stop();

  const HWAVEOUT m_handle;
  const UINT m_number;
  const WaveFormat m_format;
  const HWND m_window;
  SoundOutlet& m_outlet;
  Thread m_thread;
  std::condition_variable m_changed;  // with m_mutex: written, or stopped

  std::mutex m_mutex;
  // Changed under m_mutex: how often the time was moved on.
  std::atomic<ULONGLONG> m_moves = 0;
  // Guarded by m_mutex.
  PacedQueue m_queue;
  WrittenBuffers m_over;  // marked as done, and not handed over yet
  bool m_is_shut = false;
  bool m_is_stopped = false;
};

}  // namespace os::sound
