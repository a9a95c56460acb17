#include "recovery/frame_signs.h"

#include "record/block_format.h"

namespace zebx {
namespace {

constexpr WORD kMaxFrameType = 0xFF;
constexpr WORD kUsedFlags = kFrameVideoLost | kFrameVideoAlarm | kFrameIOAlarm |
                            kFrameEncoderTypeMask | kFrameAlarm | kFrameRT | kFrameVoice;
constexpr LONG kMostBackwardMs = 1000;
constexpr LONG kMostForwardMs = 24 * 60 * 60 * 1000;
constexpr DWORD kUsualGapMs = 10 * 1000;

}  // namespace

bool LooksLikeFrame(const FrameHeader& header) {
  if (header.m_type > kMaxFrameType || (header.m_flags & ~kUsedFlags) != 0) return false;
  if (header.m_video_bytes > kMaxFramePartBytes || header.m_speech_bytes > kMaxFramePartBytes) {
    return false;
  }
  // An I-frame of nothing is how a run of zeros reads.
  return HasContents(header) || !header.IsIFrame();
}

bool IsNewBlock(const FrameHeader& header, ULONGLONG block) {
  const DWORD previous = header.m_type | DWORD{header.m_flags} << 16;
  return previous == block && header.m_time_stamp == kNoBlock && header.m_video_bytes == 0;
}

bool HasContents(const FrameHeader& header) {
  return header.BodyBytes() > 0 || (header.m_flags & kFrameVideoLost) != 0;
}

bool StampsFit(DWORD earlier, DWORD later) {
  const auto difference = static_cast<LONG>(later - earlier);
  return difference >= -kMostBackwardMs && difference <= kMostForwardMs;
}

bool Follows(const FrameHeader& earlier, const FrameHeader& later) {
  return ((earlier.m_flags ^ later.m_flags) & kFrameEncoderTypeMask) == 0 &&
         later.m_time_stamp - earlier.m_time_stamp <= kUsualGapMs;
}

}  // namespace zebx
