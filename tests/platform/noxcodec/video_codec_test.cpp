// The video encoder and decoder with each other: quality, rate and the bytes between them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>

#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/video_decoder.h"
#include "tests/platform/noxcodec/picture_measures.h"
#include "tests/support/bytes.h"

namespace zebx::noxcodec {
namespace {

struct Outcome {
  std::size_t bytes = 0;
  double worst_luma_psnr = 99;
  double mean_luma_psnr = 0;
};

Outcome RoundTrip(const VideoEncoderSettings& settings, const std::vector<Picture>& pictures) {
  const auto packets = EncodeAll(settings, pictures);
  VideoDecoder decoder;
  Outcome outcome;
  for (std::size_t i = 0; i < packets.size(); ++i) {
    const bool is_intra = i % static_cast<std::size_t>(settings.gop_length) == 0;
    EXPECT_TRUE(decoder.Decode(packets[i], is_intra ? FrameKind::kIntra : FrameKind::kPredicted));
    const PictureView decoded = decoder.LastPicture();
    const double psnr = LumaPsnr(decoded, pictures[i].View());
    outcome.bytes += packets[i].size();
    outcome.worst_luma_psnr = std::min(outcome.worst_luma_psnr, psnr);
    outcome.mean_luma_psnr += psnr / static_cast<double>(packets.size());
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

DWORD ChecksumOf(const PictureView& picture) {
  std::vector<BYTE> pixels;
  for (const PlaneView& plane : picture.planes) {
    for (int y = 0; y < plane.height; ++y) {
      pixels.insert(pixels.end(), plane.Row(y), plane.Row(y) + plane.width);
    }
  }
  return Crc32(pixels);
}

// The bytes are the encoder's, the pixels are the format's: those may change with the encoder,
// these only with the version of the format.
TEST(VideoCodec, KeepsItsBytesAndPixels) {
  const auto packets = EncodeAll({.width = 32, .height = 16, .quantiser_i = 8, .quantiser_p = 10},
                                 {GoldenPicture(0), GoldenPicture(3)});
  const std::string golden_i =
      Hex("72E2F677510008200010000000000084A0A7822F5668C9607D22710090446C45FC469608DBBA2CCE4D8BBFA3"
          "C41CD837E7BA57E3D25CC1FEE7C7A504189709482A0B5DB5354D6568E0DC66D34B4872DA15FB4CA0F4CB9756"
          "2E7E3B8A2DADE65654616D51D7C7DA5B59531897B7D356FB4BC690FEBF216278A501EBCC51DE14333A402914"
          "1F9786B5539B23E43BAFEE5C1D8042D27199270F97B891DBDBA767BDC0B74D");
  const std::string golden_p =
      Hex("FF047D7651010A2000100072E2F677C2F0C8C5C5DC04CF850E3790F794E1DA530A651A20EF66B52C3B92115F"
          "130F53E74A3B150EA735DCCCEF6A");
  EXPECT_EQ(packets[0], PacketBytes(golden_i.begin(), golden_i.end()));
  EXPECT_EQ(packets[1], PacketBytes(golden_p.begin(), golden_p.end()));
  VideoDecoder decoder;
  ASSERT_TRUE(decoder.Decode(packets[0], FrameKind::kIntra));
  EXPECT_EQ(ChecksumOf(decoder.LastPicture()), 0xBD5DA39BU);
  ASSERT_TRUE(decoder.Decode(packets[1], FrameKind::kPredicted));
  EXPECT_EQ(ChecksumOf(decoder.LastPicture()), 0x38B49B2BU);
}

// Sizes around the macroblock and one of the recorder's.
TEST(VideoCodec, KeepsMovingPicturesOfAnySizeClose) {
  constexpr std::pair<int, int> kSizes[] = {{16, 16}, {17, 31}, {33, 18}, {160, 112}};
  for (const auto& [width, height] : kSizes) {
    const auto outcome = RoundTrip({.width = width, .height = height, .gop_length = 5},
                                   StreetPictures(width, height, 12));
    EXPECT_GT(outcome.worst_luma_psnr, 32) << width << 'x' << height;
  }
}

// Noise at full contrast has the largest levels there are.
TEST(VideoCodec, SurvivesExtremePicturesAndQuantisers) {
  DWORD state = 1;
  std::vector<Picture> pictures(3);
  for (Picture& picture : pictures) {
    picture = DrawPicture(64, 48, [&](int, int, int) {
      state = state * 1664525 + 1013904223;
      return state >> 31 != 0 ? 255 : 0;
    });
  }
  EXPECT_GT(RoundTrip({.width = 64, .height = 48, .quantiser_i = 1, .quantiser_p = 1}, pictures)
                .worst_luma_psnr,
            45);
  RoundTrip({.width = 64, .height = 48, .quantiser_i = 31, .quantiser_p = 31}, pictures);
}

TEST(VideoEncoder, PlacesKeyFramesByGroupAndOnRequest) {
  const auto picture = StreetPictures(32, 32, 1).front();
  VideoEncoder encoder({.width = 32, .height = 32, .gop_length = 3});
  std::vector<WORD> types;
  types.reserve(9);
  for (int i = 0; i < 9; ++i) {
    types.push_back(encoder.Encode(picture.View(), i == 4).frame_type);
  }
  EXPECT_EQ(types, (std::vector<WORD>{0, 1, 1, 0, 0, 1, 1, 0, 1}));
}

struct ClosePipe {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

std::vector<Picture> ReadStreetClip(const std::string& path) {
  const std::string command = "xz -dc '" + path + "'";
  // NOLINTNEXTLINE(cert-env33-c): the path is the developer's own
  const std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
  std::array<char, 256> line;
  std::vector<Picture> pictures;
  if (pipe == nullptr || std::fgets(line.data(), line.size(), pipe.get()) == nullptr) return {};
  while (std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
    Picture picture(352, 288);
    for (int plane = 0; plane < kPlaneCount; ++plane) {
      const auto view = picture.Plane(plane);
      const auto bytes = static_cast<std::size_t>(view.width * view.height);
      if (std::fread(view.pixels, 1, bytes, pipe.get()) != bytes) return {};
    }
    pictures.push_back(std::move(picture));
  }
  return pictures;
}

TEST(VideoCodec, KeepsItsRateAndQualityOnAStreetClip) {
  const std::string path = MediaFile("street_352x288.y4m.xz");
  if (path.empty()) GTEST_SKIP() << "no street clip in ZEBX_MEDIA_DIR";
  const auto pictures = ReadStreetClip(path);
  ASSERT_EQ(pictures.size(), 100U);
  const Outcome outcome = RoundTrip({.width = 352, .height = 288}, pictures);
  EXPECT_LE(outcome.bytes / pictures.size(), 1500U);
  EXPECT_GE(outcome.mean_luma_psnr, 36.0);
}

}  // namespace
}  // namespace zebx::noxcodec
