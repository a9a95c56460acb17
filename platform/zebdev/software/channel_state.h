// What a channel was told, and what it found out: the state that is shared between a channel's own
// thread and the callers of the door.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <span>

#include "platform/noxcodec/software/picture.h"
#include "platform/zebdev/device_records.h"
#include "platform/zebdev/software/channel_source.h"
#include "platform/zebdev/software/motion_detector.h"
#include "platform/zebdev/zebdev.h"

namespace zebx::zebdev {

// What is decided by tag_CHANNELCONFIG and the smaller functions of the door.
struct ChannelSettings {
  // Takes over what the record's bits name.
  void Apply(const tag_CHANNELCONFIG& config);

  bool m_encodes_video = true;
  bool m_encodes_audio = false;
  bool m_previews_audio = false;
  bool m_checks_video_loss = true;
  DWORD m_quality = 5;
  DWORD m_speed = 0;  // frames a second; 0 for as many as the standard has
  DWORD m_motion_sensitivity = MotionDetector::kDefaultSensitivity;
  DWORD m_alarm_frames = 3;
  DWORD m_show_type = 0;
  tag_DEVCOLOR m_color = {};
};

// The areas of a channel and what moves in them. Used by one thread at a time.
class MaskAreas {
 public:
  static constexpr std::size_t kMaxAreas = MotionDetector::kMaxAreas;

  // False, with nothing added, when there are kMaxAreas already.
  bool Add(const tag_MASKAREA& area);
  void Clear();
  std::size_t Count() const { return m_count; }
  std::span<const tag_MASKAREA> Areas() const { return {m_areas.data(), m_count}; }
  // Grows with every Clear: what was found in areas of another generation is not theirs.
  DWORD Generation() const { return m_generation; }

  // Bit n of `moved`: something moved in area n. An area is in alarm when that is so in
  // `alarm_frames` pictures on end, one at least.
  void Report(DWORD moved, DWORD alarm_frames);
  bool IsAnyInAlarm() const;
  // kMaskMotion and kMaskAlarm of an area.
  DWORD StateOf(std::size_t area) const { return m_states[area]; }
  tag_MASKSTATE State() const;

 private:
  std::array<tag_MASKAREA, kMaxAreas> m_areas = {};
  std::array<DWORD, kMaxAreas> m_states = {};
  std::array<DWORD, kMaxAreas> m_moved_frames = {};  // on end
  std::size_t m_count = 0;
  DWORD m_generation = 0;
};

// The latest picture of a channel, for whoever wants to see it. Any thread may call; the lock
// guards the picture while it is copied.
class LatestPicture {
 public:
  void Put(const noxcodec::Picture& picture);
  void Forget();
  // False, with nothing copied, when there is none.
  bool CopyTo(noxcodec::Picture& picture) const;

 private:
  mutable std::mutex m_mutex;
  // Guarded by m_mutex.
  noxcodec::Picture m_picture;
  bool m_has_picture = false;
};

// What tests and tools do to a channel, whether its device is there or not.
struct ChannelControls {
  std::atomic<bool> m_is_lost = false;
  std::atomic<DWORD> m_faces = 0;  // to be found in the next frame
  std::mutex m_mutex;
  std::shared_ptr<ChannelSource> m_source;  // guarded by m_mutex
};

// What a channel is. Never changes.
struct ChannelIdentity {
  NoxdevHandle m_device = nullptr;
  DWORD m_device_number = 0;
  DWORD m_channel = 0;
  bool m_is_ntsc = false;
  int m_width = 0;  // of coded pictures
  int m_height = 0;
};

// Lives as long as the device is open, or a run of the channel lasts.
struct ChannelState {
  ChannelState(const ChannelIdentity& identity, const tag_DEVCOLOR& default_color)
      : m_identity(identity), m_default_color(default_color) {
    m_settings.m_color = default_color;
  }

  const ChannelIdentity m_identity;
  const tag_DEVCOLOR m_default_color;  // leaves pictures as they are
  LatestPicture m_latest;
  // Held for copies and changes; nobody is called meanwhile.
  std::mutex m_mutex;
  // Guarded by m_mutex.
  ChannelSettings m_settings;
  MaskAreas m_masks;
  CString m_name;
};

}  // namespace zebx::zebdev
