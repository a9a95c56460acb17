#include "platform/zebdev/software/virtual_channel.h"

#include <algorithm>
#include <utility>

namespace zebx::zebdev {
namespace {

// The callback of a run that only looks: it is never stepped.
int CallNobody(void*, DWORD, std::uintptr_t, std::uintptr_t, void*) {
  return 0;
}

}  // namespace

VirtualChannel::VirtualChannel(std::shared_ptr<ChannelState> state,
                               std::shared_ptr<ChannelControls> controls, OpenSource open_source,
                               LiveSoundOutput& sound)
    : m_state(std::move(state)),
      m_controls(std::move(controls)),
      m_open_source(std::move(open_source)),
      m_sound(sound) {}

bool VirtualChannel::Start(NoxdevChannelProc callback, void* context, Drive drive) {
  // What reads films lets go of them before the next one opens them.
  Stop();
  const auto run = MakeRun(m_state, callback, context, drive);
  if (!Install(run)) return false;
  if (run->Begin()) return true;
  Stop();
  return false;
}

void VirtualChannel::Stop() {
  std::vector<std::shared_ptr<ChannelRun>> runs;
  {
    const std::lock_guard lock(m_mutex);
    m_running = nullptr;
    runs = m_runs;
  }
  for (const auto& run : runs) run->Close();
  for (const auto& run : runs) {
    if (!run->WaitUntilOver()) continue;
    const std::lock_guard lock(m_mutex);
    std::erase(m_runs, run);
  }
  if (!runs.empty()) m_state->m_latest.Forget();
}

std::vector<std::shared_ptr<ChannelRun>> VirtualChannel::End() {
  {
    const std::lock_guard lock(m_mutex);
    m_has_ended = true;
  }
  Stop();
  const std::lock_guard lock(m_mutex);
  return std::exchange(m_runs, {});
}

std::shared_ptr<ChannelRun> VirtualChannel::Running() const {
  const std::lock_guard lock(m_mutex);
  return m_running;
}

bool VirtualChannel::CurrentPicture(noxcodec::Picture& picture) {
  const auto running = Running();
  if (running != nullptr && running->CurrentPicture(picture)) return true;
  if (running != nullptr && running->IsOpen()) return false;
  // A run beside all others, with a state of its own, which is never begun.
  const auto state = std::make_shared<ChannelState>(m_state->m_identity, m_state->m_default_color);
  {
    const std::lock_guard lock(m_state->m_mutex);
    state->m_settings = m_state->m_settings;
  }
  return MakeRun(state, CallNobody, nullptr, Drive::kStepped)->CurrentPicture(picture);
}

std::shared_ptr<ChannelRun> VirtualChannel::MakeRun(std::shared_ptr<ChannelState> state,
                                                    NoxdevChannelProc callback, void* context,
                                                    Drive drive) const {
  ChannelRun::Parts parts{std::move(state), m_controls, m_open_source(), &m_sound};
  return std::make_shared<ChannelRun>(std::move(parts), callback, context, drive);
}

bool VirtualChannel::Install(const std::shared_ptr<ChannelRun>& run) {
  while (true) {
    {
      const std::lock_guard lock(m_mutex);
      if (m_has_ended) return false;
      const bool is_free = std::none_of(m_runs.begin(), m_runs.end(),
                                        [](const auto& other) { return other->IsOpen(); });
      if (is_free) {
        m_runs.push_back(run);
        m_running = run;
        return true;
      }
    }
    Stop();
  }
}

}  // namespace zebx::zebdev
