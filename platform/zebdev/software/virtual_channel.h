// A channel of an open virtual device.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/zebdev/software/channel_run.h"

namespace zebx::zebdev {

// Sees to it that there is one run at a time. Any thread may call. The lock guards which runs there
// are; nobody is called and nothing waited for while it is held. The source is opened for each run,
// and for a look at a channel that does not run.
class VirtualChannel {
 public:
  using OpenSource = std::function<std::shared_ptr<ChannelSource>()>;

  // `sound` is borrowed.
  VirtualChannel(std::shared_ptr<ChannelState> state, std::shared_ptr<ChannelControls> controls,
                 OpenSource open_source, LiveSoundOutput& sound);

  ChannelState& State() { return *m_state; }
  const std::shared_ptr<ChannelState>& SharedState() const { return m_state; }

  // Begins a run when the one before is over. False when the channel has ended, and when there is
  // no thread to be had.
  bool Start(NoxdevChannelProc callback, void* context, Drive drive);
  // Ends the run there is, if any. When this returns it is over, unless the calling thread would
  // have waited for itself: then nothing is begun any more.
  void Stop();
  // Stop for good. Runs that last are handed over.
  std::vector<std::shared_ptr<ChannelRun>> End();

  // The run that was started; null when there is none.
  std::shared_ptr<ChannelRun> Running() const;
  // What the channel sees, also when it does not run. False for a source of compressed frames.
  bool CurrentPicture(noxcodec::Picture& picture);

 private:
  std::shared_ptr<ChannelRun> MakeRun(std::shared_ptr<ChannelState> state,
                                      NoxdevChannelProc callback, void* context, Drive drive) const;
  // Makes `run` the only one, when those before are over. False when the channel has ended.
  bool Install(const std::shared_ptr<ChannelRun>& run);

  const std::shared_ptr<ChannelState> m_state;
  const std::shared_ptr<ChannelControls> m_controls;
  const OpenSource m_open_source;
  LiveSoundOutput& m_sound;

  mutable std::mutex m_mutex;
  // Guarded by m_mutex.
  bool m_has_ended = false;
  std::shared_ptr<ChannelRun> m_running;
  std::vector<std::shared_ptr<ChannelRun>> m_runs;  // that may last, m_running among them
};

}  // namespace zebx::zebdev
