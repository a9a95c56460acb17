#include "platform/zebdev/software/frame_schedule.h"

#include <algorithm>

namespace zebx::zebdev {
namespace {

constexpr ULONGLONG kSamplesPerMs = FrameSchedule::kSamplesPerSecond / 1000;
constexpr DWORD kBackwards = 0x80000000;  // tick differences from here on are of a clock set back

}  // namespace

void FrameSchedule::SetRate(DWORD frames_per_second) {
  if (frames_per_second == m_frames_per_second) return;
  m_frames_per_second = frames_per_second;
  m_base = m_last;
  m_next = std::min<ULONGLONG>(m_next, 1);
}

DWORD FrameSchedule::MsToNext(DWORD now_ms) {
  Follow(now_ms);
  const ULONGLONG due_ms = (DueOf(m_next) + kSamplesPerMs - 1) / kSamplesPerMs;
  return due_ms <= m_elapsed_ms ? 0 : static_cast<DWORD>(due_ms - m_elapsed_ms);
}

FrameSchedule::Frame FrameSchedule::Take() {
  const ULONGLONG due = DueOf(m_next);
  // The first frame comes with the sound of one period.
  const ULONGLONG samples = m_next == 0 ? DueOf(1) - due : due - m_last;
  ++m_next;
  m_last = due;
  return {due / kSamplesPerMs,
          static_cast<std::size_t>(std::min<ULONGLONG>(samples, kSamplesPerSecond))};
}

FrameSchedule::Frame FrameSchedule::TakeLatest(DWORD now_ms) {
  Follow(now_ms);
  const ULONGLONG elapsed = m_elapsed_ms * kSamplesPerMs;
  if (elapsed > m_base) {
    m_next = std::max(m_next, (elapsed - m_base) * m_frames_per_second / kSamplesPerSecond);
  }
  return Take();
}

void FrameSchedule::Follow(DWORD now_ms) {
  const DWORD step_ms = now_ms - m_last_tick_ms;
  m_last_tick_ms = now_ms;
  if (step_ms < kBackwards) m_elapsed_ms += step_ms;
}

}  // namespace zebx::zebdev
