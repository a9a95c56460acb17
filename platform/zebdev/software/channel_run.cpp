#include "platform/zebdev/software/channel_run.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/framework/error_report.h"
#include "platform/os/clock.h"
#include "platform/zebdev/software/open_mode.h"

namespace zebx::zebdev {
namespace {

// How long a wait for the next frame sleeps at most before it looks at the clock again: a clock
// that is stepped by hand moves without waking anybody.
constexpr DWORD kClockSliceMs = 10;

}  // namespace

ChannelRun::ChannelRun(Parts parts, NoxdevChannelProc callback, void* context, Drive drive)
    : m_parts(std::move(parts)),
      m_identity(m_parts.m_state->m_identity),
      m_drive(drive),
      m_gate(callback, context),
      m_picture(m_identity.m_width, m_identity.m_height),
      m_encoder(m_identity.m_width, m_identity.m_height),
      m_schedule(os::GetTickCount(), FramesPerSecond(CopySettings())) {}

bool ChannelRun::Begin() {
  if (m_drive == Drive::kStepped) return true;
  const std::lock_guard lock(m_mutex);
  if (m_is_closing) return true;
  try {
    m_thread = std::thread([this] { RunPaced(); });
  } catch (const std::system_error& failure) {
    ReportError(failure);
    return false;
  }
  return true;
}

bool ChannelRun::Step() {
  const CallGate::Stay stay(m_gate);
  if (m_drive != Drive::kStepped || !stay || !m_turn.TakeForFrame()) return false;
  m_schedule.SetRate(FramesPerSecond(CopySettings()));
  SafelyMakeFrame(m_schedule.Take());
  ReleaseTurn();
  return true;
}

std::optional<int> ChannelRun::Call(DWORD type, std::uintptr_t first, std::uintptr_t second,
                                    void* packet) {
  const CallGate::Stay stay(m_gate);
  return stay ? m_gate.Call(type, first, second, packet) : std::nullopt;
}

bool ChannelRun::ReplayPreAlarm(std::uintptr_t first, std::uintptr_t second) {
  const CallGate::Stay stay(m_gate);
  return stay && m_ring.Replay([&](FramePacket& packet) {
    return m_gate.Call(kNoxdevPreAlarmFrame, first, second, packet.m_bytes.data()).has_value();
  });
}

void ChannelRun::DrawAgain() {
  const CallGate::Stay stay(m_gate);
  if (!stay || !m_turn.TakeForRedrawing()) return;
  m_preview.Again(m_window, m_picture);
  ReleaseTurn();
}

void ChannelRun::Close() {
  m_gate.Close();
  const std::lock_guard lock(m_mutex);
  m_is_closing = true;
  m_closing.notify_all();
}

bool ChannelRun::WaitUntilOver() {
  if (!m_gate.WaitUntilEmpty()) return false;
  std::thread thread;
  {
    const std::lock_guard lock(m_mutex);
    thread.swap(m_thread);
  }
  if (thread.joinable()) thread.join();
  return true;
}

void ChannelRun::RunPaced() {
  while (WaitForNextFrame()) {
    const CallGate::Stay stay(m_gate);
    if (!stay || !m_turn.TakeForFrame()) return;
    SafelyMakeFrame(m_schedule.TakeLatest(os::GetTickCount()));
    ReleaseTurn();
  }
}

bool ChannelRun::WaitForNextFrame() {
  while (true) {
    m_schedule.SetRate(FramesPerSecond(CopySettings()));
    const DWORD wait_ms = m_schedule.MsToNext(os::GetTickCount());
    std::unique_lock lock(m_mutex);
    if (wait_ms > 0 && !m_is_closing) {
      m_closing.wait_for(lock, std::chrono::milliseconds(std::min(wait_ms, kClockSliceMs)));
    }
    if (m_is_closing) return false;
    if (wait_ms == 0) return true;
  }
}

void ChannelRun::SafelyMakeFrame(const FrameSchedule::Frame& due) {
  try {
    MakeFrame(due);
  } catch (const std::exception& failure) {
    m_is_broken = true;
    m_turn.FrameIsSeen();  // whoever is told may look
    // A source that cannot go on would say so with every frame.
    if (std::exchange(m_has_reported, true)) return;
    CString name;
    {
      const std::lock_guard lock(m_parts.m_state->m_mutex);
      name = m_parts.m_state->m_name;
    }
    ReportError(std::runtime_error("channel " + std::to_string(m_identity.m_channel) +
                                   " of device " + std::to_string(m_identity.m_device_number) +
                                   " (" + name + "): " + failure.what()));
  }
}

void ChannelRun::ReleaseTurn() {
  while (!m_turn.Release()) {
    if (m_gate.IsOpen()) m_preview.Again(m_window, m_picture);
  }
}

// Until m_is_broken is taken back, when there is one.
bool ChannelRun::NeedsIFrame() {
  if (m_needs_i_frame.exchange(false)) m_is_broken = true;
  return m_is_broken;
}

ChannelSettings ChannelRun::CopySettings() const {
  const std::lock_guard lock(m_parts.m_state->m_mutex);
  return m_parts.m_state->m_settings;
}

DWORD ChannelRun::FramesPerSecond(const ChannelSettings& settings) const {
  const DWORD standard = m_identity.m_is_ntsc ? kNtscFramesPerSecond : kPalFramesPerSecond;
  return settings.m_speed == 0 ? standard : std::min(settings.m_speed, standard);
}

}  // namespace zebx::zebdev
