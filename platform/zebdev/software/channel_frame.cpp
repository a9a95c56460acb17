// How a run makes a frame: what is seen and heard, compressed, delivered and shown.
#include <algorithm>
#include <utility>

#include "platform/os/clock.h"
#include "platform/zebdev/software/channel_run.h"
#include "platform/zebdev/software/face_packet.h"
#include "platform/zebdev/software/live_caption.h"

namespace zebx::zebdev {
namespace {

constexpr BYTE kBlackLuma = 16;
constexpr BYTE kGreyChroma = 128;

void Blacken(noxcodec::Picture& picture) {
  for (int index = 0; index < noxcodec::kPlaneCount; ++index) {
    const auto plane = picture.Plane(index);
    const BYTE value = index == noxcodec::kLuma ? kBlackLuma : kGreyChroma;
    for (int y = 0; y < plane.height; ++y) std::fill_n(plane.Row(y), plane.width, value);
  }
}

bool AreSame(const tag_DEVCOLOR& one, const tag_DEVCOLOR& other) {
  return one.m_component_0 == other.m_component_0 && one.m_component_1 == other.m_component_1 &&
         one.m_component_2 == other.m_component_2 && one.m_component_3 == other.m_component_3;
}

}  // namespace

struct ChannelRun::Frame {
  explicit Frame(const ChannelSettings& settings) : m_settings(settings) {}

  const ChannelSettings m_settings;
  DWORD m_time_stamp = os::GetTickCount();
  bool m_has_picture = false;
  bool m_is_lost = false;
  bool m_is_repeated = false;
  bool m_is_alarm = false;
  DWORD m_faces = 0;
  std::span<const std::int16_t> m_samples;
  bool m_has_video = false;
  VideoData m_video;
};

// The source is not touched once the host has been called: it may belong to another run by then.
void ChannelRun::MakeFrame(const FrameSchedule::Frame& due) {
  Frame frame(CopySettings());
  m_time_ms = due.m_time_ms;
  See(due.m_time_ms, frame);
  LookForMotion(frame);
  FindFaces(frame);
  Hear(due.m_samples, frame);
  m_turn.FrameIsSeen();

  Compress(frame);
  if (!DeliverFrame(frame) || !m_gate.IsOpen()) return;
  if (frame.m_settings.m_previews_audio && !frame.m_samples.empty()) {
    m_parts.m_sound->Play(m_identity.m_device_number, m_identity.m_channel, frame.m_samples);
  }
  if (DeliverFaces(frame) && frame.m_has_picture) Show(frame);
}

bool ChannelRun::CurrentPicture(noxcodec::Picture& picture) {
  LatestPicture& latest = m_parts.m_state->m_latest;
  if (latest.CopyTo(picture)) return true;
  const CallGate::Stay stay(m_gate);
  if (!stay || (m_parts.m_source != nullptr && m_parts.m_source->IsCompressed())) return false;
  if (m_turn.TakeForLook()) {
    try {
      Frame frame(CopySettings());
      See(m_time_ms, frame);
    } catch (...) {
      ReleaseTurn();  // or nobody would ever have it again
      throw;
    }
    ReleaseTurn();
  }
  return latest.CopyTo(picture);
}

void ChannelRun::See(ULONGLONG time_ms, Frame& frame) {
  ChannelSource* source = m_parts.m_source.get();
  frame.m_is_lost = m_parts.m_controls->m_is_lost || source == nullptr;
  const bool is_compressed = !frame.m_is_lost && source->IsCompressed();
  if (std::exchange(m_was_compressed, is_compressed) != is_compressed) m_is_broken = true;
  if (is_compressed) {
    m_parts.m_state->m_latest.Forget();
    frame.m_has_video = source->ReadFrame(time_ms, NeedsIFrame(), m_compressed);
    if (frame.m_has_video && m_compressed.m_type == 0) m_is_broken = false;
    frame.m_video = {m_compressed.m_type, m_compressed.m_encoder_type, m_compressed.m_video};
    return;
  }
  frame.m_has_picture = true;
  if (!frame.m_is_lost) frame.m_is_lost = !source->DrawPicture(time_ms, m_picture);
  if (m_picture.Width() != m_identity.m_width || m_picture.Height() != m_identity.m_height) {
    frame.m_is_lost = true;
    m_picture = noxcodec::Picture(m_identity.m_width, m_identity.m_height);
  }
  if (frame.m_is_lost) {
    Blacken(m_picture);
  } else {
    frame.m_is_repeated = source->IsRepeated();
    const tag_DEVCOLOR& color = frame.m_settings.m_color;
    if (!m_applied_color || !AreSame(*m_applied_color, color)) {
      m_applied_color = color;
      m_colour.Set(color, m_parts.m_state->m_default_color);
    }
    m_colour.Apply(m_picture);
  }
  m_parts.m_state->m_latest.Put(m_picture);
}

void ChannelRun::LookForMotion(Frame& frame) {
  ChannelState& state = *m_parts.m_state;
  MaskAreas masks;
  {
    const std::lock_guard lock(state.m_mutex);
    masks = state.m_masks;
  }
  DWORD moved = 0;
  if (masks.Count() == 0 || !frame.m_has_picture || frame.m_is_lost) {
    m_detector.Forget();
  } else if (!frame.m_is_repeated) {
    m_detector.SetSensitivity(frame.m_settings.m_motion_sensitivity);
    moved = m_detector.Look(m_picture.View(), masks.Areas());
  }
  const std::lock_guard lock(state.m_mutex);
  if (state.m_masks.Generation() != masks.Generation()) return;
  if (!frame.m_is_repeated) state.m_masks.Report(moved, frame.m_settings.m_alarm_frames);
  frame.m_is_alarm = state.m_masks.IsAnyInAlarm();
}

void ChannelRun::FindFaces(Frame& frame) {
  const DWORD wanted = m_parts.m_controls->m_faces.exchange(0);
  if (wanted == 0 || !frame.m_has_picture || frame.m_is_lost) return;
  auto areas = m_parts.m_source->Faces();
  if (areas.size() < wanted) {
    areas = PlacedFaces(m_picture.Width(), m_picture.Height(), wanted);
  }
  areas.resize(std::min<std::size_t>(areas.size(), wanted));
  frame.m_faces = WriteFacePacket(m_picture.View(), areas, m_face_packet);
}

void ChannelRun::Hear(std::size_t samples, Frame& frame) {
  m_samples.resize(samples);
  if (m_parts.m_source != nullptr && m_parts.m_source->ReadSound(m_samples)) {
    frame.m_samples = m_samples;
  }
}

void ChannelRun::Compress(Frame& frame) {
  if (!frame.m_settings.m_encodes_video) {
    frame.m_has_video = false;
    m_is_broken = true;
  } else if (frame.m_has_picture) {
    frame.m_video = m_encoder.EncodePicture(m_picture.View(), frame.m_settings.m_quality,
                                            FramesPerSecond(frame.m_settings), NeedsIFrame());
    frame.m_has_video = true;
    m_is_broken = false;
  }
}

bool ChannelRun::DeliverFrame(const Frame& frame) {
  if (!frame.m_has_video) return true;
  const ChannelSettings& settings = frame.m_settings;
  DWORD flags = 0;
  if (frame.m_is_lost && settings.m_checks_video_loss) flags |= kPacketVideoLost;
  if (frame.m_is_alarm) flags |= kPacketVideoAlarm;
  const auto speech =
      settings.m_encodes_audio ? m_encoder.EncodeSound(frame.m_samples) : std::span<const BYTE>();
  auto packet = m_ring.NewPacket(frame.m_video.m_type == 0);
  FillFramePacket(*packet, flags, frame.m_time_stamp, frame.m_video, speech);
  const auto answer =
      m_gate.Call(kNoxdevLiveFrame, reinterpret_cast<std::uintptr_t>(m_identity.m_device),
                  m_identity.m_channel, packet->m_bytes.data());
  // Only now, so that a host which asks for the frames before this one does not get it twice.
  m_ring.Push(std::move(packet));
  return answer.has_value();
}

bool ChannelRun::DeliverFaces(const Frame& frame) {
  if (frame.m_faces == 0) return m_gate.IsOpen();
  return m_gate
      .Call(kNoxdevFaces, reinterpret_cast<std::uintptr_t>(m_identity.m_device),
            m_identity.m_channel, m_face_packet.data())
      .has_value();
}

void ChannelRun::Show(const Frame& frame) {
  NoxshowStream stream = m_preview.Draw(m_window, frame.m_settings.m_show_type, m_picture);
  if (stream == nullptr) return;
  tag_CAPTIONINFO caption = {};
  const auto answer =
      m_gate.Call(kNoxdevCaptionRequest, reinterpret_cast<std::uintptr_t>(m_identity.m_device),
                  reinterpret_cast<std::uintptr_t>(stream), &caption);
  if (!answer) return;
  MaskAreas masks;
  {
    const std::lock_guard lock(m_parts.m_state->m_mutex);
    masks = m_parts.m_state->m_masks;
  }
  const LiveMarks marks = {frame.m_is_lost && frame.m_settings.m_checks_video_loss,
                           frame.m_settings.m_previews_audio && !frame.m_samples.empty(),
                           m_identity.m_width, m_identity.m_height};
  const bool has_caption = *answer != kNoxdevNotMine;
  m_preview.Present(LiveDisplayRecord(has_caption ? &caption : nullptr, masks, marks));
}

}  // namespace zebx::zebdev
