// What the video decoder does with packets that are damaged, missing or out of order.
#include <gtest/gtest.h>

#include "platform/framework/byte_order.h"
#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/video_decoder.h"
#include "tests/platform/noxcodec/picture_measures.h"

namespace zebx::noxcodec {
namespace {

constexpr int kWidth = 48;
constexpr int kHeight = 32;

// An I-frame, three frames that follow it, and the next I-frame.
class VideoDamage : public testing::Test {
 protected:
  bool Decode(std::size_t index) {
    return m_decoder.Decode(m_packets[index],
                            index % 4 == 0 ? FrameKind::kIntra : FrameKind::kPredicted);
  }

  void ExpectStillShown(const Picture& picture) const {
    EXPECT_EQ(Psnr(m_decoder.LastCodedPicture().Plane(kLuma), picture.Plane(kLuma)), 99);
  }

  const std::vector<PacketBytes> m_packets = EncodeAll(
      {.width = kWidth, .height = kHeight, .gop_length = 4}, StreetPictures(kWidth, kHeight, 5));
  VideoDecoder m_decoder;
};

TEST_F(VideoDamage, FlippedBitsCutsAndAdditionsAreErrorsThatKeepTheLastPicture) {
  ASSERT_TRUE(Decode(0));
  const Picture before = m_decoder.LastCodedPicture();
  for (std::size_t i = 0; i < m_packets[1].size(); ++i) {
    for (int bit = 0; bit < 8; ++bit) {
      PacketBytes damaged = m_packets[1];
      damaged[i] = static_cast<BYTE>(damaged[i] ^ (1 << bit));
      ASSERT_FALSE(m_decoder.Decode(damaged, FrameKind::kPredicted)) << i;
    }
    ASSERT_FALSE(m_decoder.Decode(std::span(m_packets[1]).first(i), FrameKind::kPredicted)) << i;
  }
  PacketBytes longer = m_packets[1];
  longer.push_back(0);
  EXPECT_FALSE(m_decoder.Decode(longer, FrameKind::kPredicted));
  PacketBytes cut = m_packets[4];
  cut.resize(cut.size() / 3);
  ByteWriter(cut).Put(DWORD{Crc32(std::span<const BYTE>(cut).subspan(sizeof(DWORD)))});
  EXPECT_FALSE(m_decoder.Decode(cut, FrameKind::kIntra)) << "the content ends too early";
  ExpectStillShown(before);
  EXPECT_TRUE(Decode(1));
}

TEST_F(VideoDamage, FramesDecodeOnceAndOnlyAfterTheirOwnReference) {
  const struct {
    std::vector<std::size_t> decoded;
    std::size_t refused;
  } cases[] = {{{}, 1}, {{0}, 2}, {{0, 1}, 1}, {{0, 4}, 1}};
  for (const auto& [decoded, refused] : cases) {
    m_decoder = VideoDecoder();
    for (const std::size_t index : decoded) EXPECT_TRUE(Decode(index));
    const Picture before = m_decoder.LastCodedPicture();
    EXPECT_FALSE(Decode(refused));
    EXPECT_FALSE(m_decoder.Decode(m_packets[0], FrameKind::kPredicted));  // is none
    EXPECT_EQ(m_decoder.HasPicture(), !decoded.empty());
    if (!decoded.empty()) ExpectStillShown(before);
    EXPECT_TRUE(Decode(4));
  }
}

TEST_F(VideoDamage, StreamMayGoOnInAnotherSize) {
  ASSERT_TRUE(Decode(0));
  const auto larger = EncodeAll({.width = 80, .height = 64}, StreetPictures(80, 64, 2));
  ASSERT_TRUE(m_decoder.Decode(larger[0], FrameKind::kIntra));
  ASSERT_TRUE(m_decoder.Decode(larger[1], FrameKind::kPredicted));
  EXPECT_EQ(m_decoder.LastPicture().Width(), 80);
  EXPECT_FALSE(Decode(1));
  EXPECT_TRUE(Decode(4));
  EXPECT_EQ(m_decoder.LastPicture().Height(), kHeight);
}

}  // namespace
}  // namespace zebx::noxcodec
