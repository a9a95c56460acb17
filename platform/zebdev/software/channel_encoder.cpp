#include "platform/zebdev/software/channel_encoder.h"

#include <cstring>
#include <limits>

#include "platform/zebdev/device_records.h"

namespace zebx::zebdev {
namespace {

struct QualityStep {
  DWORD m_up_to;
  int m_quantiser_i;
  int m_quantiser_p;
};

constexpr QualityStep kQualitySteps[] = {
    {1, 12, 12}, {3, 10, 10}, {6, 8, 8}, {8, 6, 6}, {0xFFFFFFFF, 4, 6},
};

const QualityStep& StepOf(DWORD quality) {
  const QualityStep* step = kQualitySteps;
  while (quality > step->m_up_to) ++step;
  return *step;
}

}  // namespace

VideoData ChannelEncoder::EncodePicture(const noxcodec::PictureView& picture, DWORD quality,
                                        DWORD group_frames, bool needs_i_frame) {
  if (m_video == nullptr || quality != m_quality) {
    noxcodec::VideoEncoderSettings settings;
    settings.width = m_width;
    settings.height = m_height;
    settings.gop_length = std::numeric_limits<int>::max();  // the groups are counted here
    settings.quantiser_i = StepOf(quality).m_quantiser_i;
    settings.quantiser_p = StepOf(quality).m_quantiser_p;
    m_video = std::make_unique<noxcodec::VideoEncoder>(settings);
    m_quality = quality;
  }
  const auto packet = m_video->Encode(picture, needs_i_frame || m_group_frames >= group_frames);
  m_group_frames = packet.frame_type == 0 ? 1 : m_group_frames + 1;
  return {static_cast<BYTE>(packet.frame_type), 0, packet.data};
}

std::span<const BYTE> ChannelEncoder::EncodeSound(std::span<const std::int16_t> samples) {
  if (samples.empty()) return {};
  return m_speech.Encode(samples);
}

void FillFramePacket(FramePacket& packet, DWORD flags, DWORD time_stamp, const VideoData& video,
                     std::span<const BYTE> speech) {
  tag_DEVFRAME head = {};
  head.m_flags = flags | video.m_type;
  head.m_flags |= (DWORD{video.m_encoder_type} << kPacketEncoderTypeShift) & kPacketEncoderTypeMask;
  if (!speech.empty()) head.m_flags |= kPacketHasSpeech;
  head.m_time_stamp = time_stamp;
  head.m_video_bytes = static_cast<DWORD>(video.m_bytes.size());
  head.m_speech_bytes = static_cast<DWORD>(speech.size());

  BYTE head_bytes[sizeof(head)];
  std::memcpy(head_bytes, &head, sizeof(head));
  packet.m_bytes.assign(head_bytes, head_bytes + sizeof(head));
  packet.m_bytes.insert(packet.m_bytes.end(), video.m_bytes.begin(), video.m_bytes.end());
  packet.m_bytes.insert(packet.m_bytes.end(), speech.begin(), speech.end());
  packet.m_time_stamp = time_stamp;
}

}  // namespace zebx::zebdev
