#include "platform/zebdev/software/channel_state.h"

#include <algorithm>

namespace zebx::zebdev {

void ChannelSettings::Apply(const tag_CHANNELCONFIG& config) {
  if ((config.m_valid & kConfigHasEncoder) != 0) {
    m_encodes_video = (config.m_streams & kConfigEncodesVideo) != 0;
    m_encodes_audio = (config.m_streams & kConfigEncodesAudio) != 0;
    m_previews_audio = (config.m_streams & kConfigPreviewsAudio) != 0;
    m_checks_video_loss = (config.m_valid & kConfigChecksVideoLoss) != 0;
  }
  if ((config.m_valid & kConfigHasSpeed) != 0) m_speed = config.m_speed;
  if ((config.m_valid & kConfigHasQuality) != 0) m_quality = config.m_quality;
  if ((config.m_valid & kConfigHasMotionSensitivity) != 0) {
    m_motion_sensitivity = config.m_motion_sensitivity;
  }
  if ((config.m_valid & kConfigHasAlarmFrames) != 0) m_alarm_frames = config.m_alarm_frames;
}

bool MaskAreas::Add(const tag_MASKAREA& area) {
  if (m_count == kMaxAreas) return false;
  m_areas[m_count] = area;
  m_states[m_count] = m_moved_frames[m_count] = 0;
  ++m_count;
  return true;
}

void MaskAreas::Clear() {
  m_count = 0;
  ++m_generation;
}

void MaskAreas::Report(DWORD moved, DWORD alarm_frames) {
  for (std::size_t area = 0; area < m_count; ++area) {
    const bool has_moved = (moved >> area & 1U) != 0;
    DWORD& frames = m_moved_frames[area];
    frames = has_moved ? std::max(frames, frames + 1) : 0;
    m_states[area] = 0;
    if (has_moved) m_states[area] |= kMaskMotion;
    if (frames >= std::max<DWORD>(alarm_frames, 1)) m_states[area] |= kMaskAlarm;
  }
}

bool MaskAreas::IsAnyInAlarm() const {
  return std::any_of(m_states.begin(), m_states.begin() + static_cast<std::ptrdiff_t>(m_count),
                     [](DWORD state) { return (state & kMaskAlarm) != 0; });
}

tag_MASKSTATE MaskAreas::State() const {
  tag_MASKSTATE state = {};
  state.m_count = static_cast<DWORD>(m_count);
  for (std::size_t area = 0; area < std::min(m_count, kMaskStates); ++area) {
    state.m_areas[area].m_state = m_states[area];
  }
  return state;
}

void LatestPicture::Put(const noxcodec::Picture& picture) {
  const std::lock_guard lock(m_mutex);
  m_picture = picture;
  m_has_picture = true;
}

void LatestPicture::Forget() {
  const std::lock_guard lock(m_mutex);
  m_has_picture = false;
}

bool LatestPicture::CopyTo(noxcodec::Picture& picture) const {
  const std::lock_guard lock(m_mutex);
  if (m_has_picture) picture = m_picture;
  return m_has_picture;
}

}  // namespace zebx::zebdev
