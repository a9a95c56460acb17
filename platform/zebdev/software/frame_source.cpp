// The source of frames that are compressed already.
#include <utility>

#include "platform/zebdev/software/channel_source.h"

namespace zebx::zebdev {
namespace {

class FrameSource final : public ChannelSource {
 public:
  explicit FrameSource(std::vector<CompressedFrame> frames) : m_frames(std::move(frames)) {}

  bool DrawPicture(ULONGLONG /*time_ms*/, noxcodec::Picture& /*picture*/) override { return false; }
  bool IsCompressed() const override { return true; }

  bool ReadFrame(ULONGLONG /*time_ms*/, bool needs_i_frame, CompressedFrame& frame) override {
    for (std::size_t tried = 0; tried < m_frames.size(); ++tried) {
      const CompressedFrame& next = m_frames[m_next];
      m_next = (m_next + 1) % m_frames.size();
      if (needs_i_frame && next.m_type != 0) continue;
      frame = next;
      return true;
    }
    return false;
  }

 private:
  std::vector<CompressedFrame> m_frames;
  std::size_t m_next = 0;
};

}  // namespace

std::unique_ptr<ChannelSource> MakeFrameSource(std::vector<CompressedFrame> frames) {
  return std::make_unique<FrameSource>(std::move(frames));
}

}  // namespace zebx::zebdev
