// The video encoder and decoder with each other: quality, rate and the bytes between them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/video_decoder.h"
#include "tests/platform/noxcodec/picture_measures.h"
#include "tests/support/bytes.h"
#include "tests/support/temp_dir.h"

namespace zebx::noxcodec {
namespace {

struct Outcome {
  std::size_t bytes = 0;
  double worst_psnr = 99, mean_psnr = 0;
};

Outcome RoundTrip(const VideoEncoderSettings& settings, const std::vector<Picture>& pictures) {
  const auto packets = EncodeAll(settings, pictures);
  VideoDecoder decoder;
  Outcome outcome;
  for (std::size_t i = 0; i < packets.size(); ++i) {
    const bool is_intra = i % static_cast<std::size_t>(settings.gop_length) == 0;
    EXPECT_TRUE(decoder.Decode(packets[i], is_intra ? FrameKind::kIntra : FrameKind::kPredicted));
    const double psnr = Psnr(decoder.LastPicture().planes[kLuma], pictures[i].Plane(kLuma));
    outcome.bytes += packets[i].size();
    outcome.worst_psnr = std::min(outcome.worst_psnr, psnr);
    outcome.mean_psnr += psnr / static_cast<double>(packets.size());
  }
  return outcome;
}

// A bright patch that moves with `shift` before a slope.
Picture GoldenPicture(int shift) {
  return DrawPicture(32, 16, [&](int, int x, int y) {
    const int u = x - shift;
    const bool inside = u >= 4 && u < 13 && y >= 3 && y < 12;
    return inside ? 150 + 9 * u - 6 * y : 90 + x / 2 + y / 4;
  });
}

// The bytes are the encoder's, the pixels are the format's: those may change with the encoder,
// these only with the version of the format.
TEST(VideoCodec, KeepsItsBytesAndPixels) {
  const struct {
    const char* packet;
    DWORD pixels;
  } golden[] = {
      {"72E2F677510008200010000000000084A0A7822F5668C9607D22710090446C45FC469608DBBA2CCE4D8BBFA3"
       "C41CD837E7BA57E3D25CC1FEE7C7A504189709482A0B5DB5354D6568E0DC66D34B4872DA15FB4CA0F4CB9756"
       "2E7E3B8A2DADE65654616D51D7C7DA5B59531897B7D356FB4BC690FEBF216278A501EBCC51DE14333A402914"
       "1F9786B5539B23E43BAFEE5C1D8042D27199270F97B891DBDBA767BDC0B74D",
       0xBD5DA39B},
      {"FF047D7651010A2000100072E2F677C2F0C8C5C5DC04CF850E3790F794E1DA530A651A20EF66B52C3B92115F"
       "130F53E74A3B150EA735DCCCEF6A",
       0x38B49B2B}};
  const auto packets = EncodeAll({.width = 32, .height = 16, .quantiser_i = 8, .quantiser_p = 10},
                                 {GoldenPicture(0), GoldenPicture(3)});
  const auto decoder = MakeVideoDecoder(32, 16);
  const auto shown = [&](DWORD post_processing) {
    std::array<BYTE, 32 * 16 * 3 / 2> planes;
    EXPECT_EQ(nxcGetVideo(decoder.get(), planes.data(), kNxcFormatI420, 32, post_processing), 0);
    return Crc32(planes);
  };
  for (WORD i = 0; i < 2; ++i) {
    EXPECT_EQ(std::string(packets[i].begin(), packets[i].end()), Hex(golden[i].packet)) << i;
    const auto length = static_cast<DWORD>(packets[i].size());
    ASSERT_EQ(nxcDecodeVideo(decoder.get(), i, packets[i].data(), length), 0);
    EXPECT_EQ(shown(0), golden[i].pixels) << i;
  }
  EXPECT_EQ(shown(kNxcPostDeblockHorizontal), 0xF73485E5U);
  EXPECT_EQ(shown(kNxcPostDeblockVertical), 0xDD7943FFU);
  EXPECT_EQ(shown(kNxcPostPlayback), 0x21CCF81BU);
  EXPECT_EQ(shown(0x18), golden[1].pixels) << "the reserved bits change nothing";
}

// Sizes around the macroblock and one of the recorder's; noise at full contrast has the largest
// levels there are.
TEST(VideoCodec, KeepsMovingPicturesOfAnySizeClose) {
  constexpr std::pair<int, int> kSizes[] = {{16, 16}, {17, 31}, {33, 18}, {160, 112}};
  for (const auto& [width, height] : kSizes) {
    const auto pictures = StreetPictures(width, height, 12);
    EXPECT_GT(RoundTrip({.width = width, .height = height, .gop_length = 5}, pictures).worst_psnr,
              32)
        << width << 'x' << height;
  }
  DWORD dice = 1;
  std::vector<Picture> noise(3);
  for (Picture& picture : noise) {
    picture = DrawPicture(64, 48, [&](int, int, int) { return 255 * Roll(dice, 1); });
  }
  for (const auto& [quantiser, psnr] : {std::pair{1, 45}, {31, 10}}) {
    EXPECT_GT(
        RoundTrip({.width = 64, .height = 48, .quantiser_i = quantiser, .quantiser_p = quantiser},
                  noise)
            .worst_psnr,
        psnr);
  }
}

TEST(VideoCodec, KeepsItsRateAndQualityOnAStreetClip) {
  const char* const media = std::getenv("ZEBX_MEDIA_DIR");
  const std::string path = (media == nullptr ? "" : media) + std::string("/street_352x288.y4m.xz");
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no street clip in ZEBX_MEDIA_DIR";
  const TempDir directory;
  const std::string unpacked = directory.File("clip");
  // NOLINTNEXTLINE(cert-env33-c,concurrency-mt-unsafe): the path is the developer's own
  ASSERT_EQ(std::system(("xz -dc '" + path + "' > '" + unpacked + "'").c_str()), 0);
  const std::string clip = ReadWholeFile(unpacked);
  std::vector<Picture> pictures;
  for (std::size_t at = clip.find('\n'); at + 1 < clip.size();) {
    at += std::string("\nFRAME").size();
    pictures.push_back(DrawPicture(352, 288, [&](int, int, int) { return clip.at(++at); }));
  }
  ASSERT_EQ(pictures.size(), 100U);
  const Outcome outcome = RoundTrip({.width = 352, .height = 288}, pictures);
  EXPECT_LE(outcome.bytes / pictures.size(), 1500U);
  EXPECT_GE(outcome.mean_psnr, 36.0);
}

}  // namespace
}  // namespace zebx::noxcodec
