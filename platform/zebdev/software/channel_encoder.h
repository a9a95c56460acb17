// Turns a channel's pictures and sound into frame packets.
#pragma once

#include <memory>
#include <span>

#include "platform/noxcodec/software/picture.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "platform/zebdev/software/pre_alarm_ring.h"

namespace zebx::zebdev {

// A compressed picture. Borrowed.
struct VideoData {
  BYTE m_type = 0;  // 0 for an I-frame
  BYTE m_encoder_type = 0;
  std::span<const BYTE> m_bytes;
};

// Used by one thread at a time. Takes memory only when quality or sizes change.
class ChannelEncoder {
 public:
  // The size of all pictures.
  ChannelEncoder(int width, int height) : m_width(width), m_height(height) {}

  // Valid until the next call. A new quality begins with an I-frame; so does every group of
  // `group_frames`, and `needs_i_frame` asks for one.
  VideoData EncodePicture(const noxcodec::PictureView& picture, DWORD quality, DWORD group_frames,
                          bool needs_i_frame);
  // Valid until the next call. None for no samples.
  std::span<const BYTE> EncodeSound(std::span<const std::int16_t> samples);

 private:
  const int m_width;
  const int m_height;
  DWORD m_quality = 0;
  std::unique_ptr<noxcodec::VideoEncoder> m_video;
  DWORD m_group_frames = 0;  // frames since and with the last I-frame
  noxcodec::SpeechEncoder m_speech;
};

// Fills an empty packet. `flags` are kPacketVideoLost and kPacketVideoAlarm; the others follow from
// what is put in.
void FillFramePacket(FramePacket& packet, DWORD flags, DWORD time_stamp, const VideoData& video,
                     std::span<const BYTE> speech);

}  // namespace zebx::zebdev
