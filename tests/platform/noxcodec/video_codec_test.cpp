// The video encoder and decoder with each other: quality, rate and the bytes between them.
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/video_decoder.h"
#include "tests/platform/noxcodec/picture_measures.h"

namespace noxcodec {
namespace {

FrameKind KindOf(std::size_t index, int gop_length) {
  return index % static_cast<std::size_t>(gop_length) == 0 ? FrameKind::kIntra
                                                           : FrameKind::kPredicted;
}

struct Outcome {
  std::size_t bytes = 0;
  double worst_luma_psnr = 99;
  double luma_psnr_sum = 0;
};

Outcome RoundTrip(const VideoEncoderSettings& settings, const std::vector<Picture>& pictures) {
  const auto packets = EncodeAll(settings, pictures);
  VideoDecoder decoder;
  Outcome outcome;
  for (std::size_t i = 0; i < packets.size(); ++i) {
    EXPECT_TRUE(decoder.Decode(packets[i], KindOf(i, settings.gop_length))) << i;
    const PictureView decoded = decoder.LastPicture();
    EXPECT_EQ(decoded.Width(), settings.width);
    EXPECT_EQ(decoded.Height(), settings.height);
    const double psnr = LumaPsnr(decoded, pictures[i].View());
    outcome.bytes += packets[i].size();
    outcome.worst_luma_psnr = std::min(outcome.worst_luma_psnr, psnr);
    outcome.luma_psnr_sum += psnr;
  }
  return outcome;
}

// A bright patch that moves with `shift` before a slope.
Picture GoldenPicture(int shift) {
  Picture picture(32, 16);
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    const MutablePlaneView view = picture.Plane(plane);
    for (int y = 0; y < view.height; ++y) {
      for (int x = 0; x < view.width; ++x) {
        const int u = x - shift;
        const bool inside = u >= 4 && u < 13 && y >= 3 && y < 12;
        view.Row(y)[x] = static_cast<BYTE>(inside ? 150 + 9 * u - 6 * y : 90 + x / 2 + y / 4);
      }
    }
  }
  return picture;
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
  const PacketBytes golden_i = {
      0x72, 0xE2, 0xF6, 0x77, 0x51, 0x00, 0x08, 0x20, 0x00, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x84, 0xA0, 0xA7, 0x82, 0x2F, 0x56, 0x68, 0xC9, 0x60, 0x7D, 0x22, 0x71, 0x00, 0x90, 0x44,
      0x6C, 0x45, 0xFC, 0x46, 0x96, 0x08, 0xDB, 0xBA, 0x2C, 0xCE, 0x4D, 0x8B, 0xBF, 0xA3, 0xC4,
      0x1C, 0xD8, 0x37, 0xE7, 0xBA, 0x57, 0xE3, 0xD2, 0x5C, 0xC1, 0xFE, 0xE7, 0xC7, 0xA5, 0x04,
      0x18, 0x97, 0x09, 0x48, 0x2A, 0x0B, 0x5D, 0xB5, 0x35, 0x4D, 0x65, 0x68, 0xE0, 0xDC, 0x66,
      0xD3, 0x4B, 0x48, 0x72, 0xDA, 0x15, 0xFB, 0x4C, 0xA0, 0xF4, 0xCB, 0x97, 0x56, 0x2E, 0x7E,
      0x3B, 0x8A, 0x2D, 0xAD, 0xE6, 0x56, 0x54, 0x61, 0x6D, 0x51, 0xD7, 0xC7, 0xDA, 0x5B, 0x59,
      0x53, 0x18, 0x97, 0xB7, 0xD3, 0x56, 0xFB, 0x4B, 0xC6, 0x90, 0xFE, 0xBF, 0x21, 0x62, 0x78,
      0xA5, 0x01, 0xEB, 0xCC, 0x51, 0xDE, 0x14, 0x33, 0x3A, 0x40, 0x29, 0x14, 0x1F, 0x97, 0x86,
      0xB5, 0x53, 0x9B, 0x23, 0xE4, 0x3B, 0xAF, 0xEE, 0x5C, 0x1D, 0x80, 0x42, 0xD2, 0x71, 0x99,
      0x27, 0x0F, 0x97, 0xB8, 0x91, 0xDB, 0xDB, 0xA7, 0x67, 0xBD, 0xC0, 0xB7, 0x4D};
  const PacketBytes golden_p = {
      0xFF, 0x04, 0x7D, 0x76, 0x51, 0x01, 0x0A, 0x20, 0x00, 0x10, 0x00, 0x72, 0xE2, 0xF6, 0x77,
      0xC2, 0xF0, 0xC8, 0xC5, 0xC5, 0xDC, 0x04, 0xCF, 0x85, 0x0E, 0x37, 0x90, 0xF7, 0x94, 0xE1,
      0xDA, 0x53, 0x0A, 0x65, 0x1A, 0x20, 0xEF, 0x66, 0xB5, 0x2C, 0x3B, 0x92, 0x11, 0x5F, 0x13,
      0x0F, 0x53, 0xE7, 0x4A, 0x3B, 0x15, 0x0E, 0xA7, 0x35, 0xDC, 0xCC, 0xEF, 0x6A};
  EXPECT_EQ(packets[0], golden_i);
  EXPECT_EQ(packets[1], golden_p);
  VideoDecoder decoder;
  ASSERT_TRUE(decoder.Decode(golden_i, FrameKind::kIntra));
  EXPECT_EQ(ChecksumOf(decoder.LastPicture()), 0xBD5DA39BU);
  ASSERT_TRUE(decoder.Decode(golden_p, FrameKind::kPredicted));
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

TEST(VideoCodec, CodesAStillSceneInAFewBytes) {
  const auto still = StreetPictures(176, 144, 1).front();
  const auto packets = EncodeAll({.width = 176, .height = 144}, {still, still, still});
  EXPECT_LT(packets[2].size(), 60U);
}

TEST(VideoCodec, QuantiserTradesSizeForQualityAtEveryStep) {
  const auto pictures = StreetPictures(176, 144, 10);
  Outcome finer =
      RoundTrip({.width = 176, .height = 144, .quantiser_i = 3, .quantiser_p = 3}, pictures);
  for (int quantiser = 4; quantiser <= 12; ++quantiser) {
    const Outcome coarser =
        RoundTrip({.width = 176, .height = 144, .quantiser_i = quantiser, .quantiser_p = quantiser},
                  pictures);
    EXPECT_LT(coarser.bytes, finer.bytes) << quantiser;
    EXPECT_LT(coarser.luma_psnr_sum, finer.luma_psnr_sum) << quantiser;
    finer = coarser;
  }
}

// Noise at full contrast has the largest levels there are.
TEST(VideoCodec, SurvivesExtremePicturesAndQuantisers) {
  std::vector<Picture> pictures(3, Picture(64, 48));
  DWORD state = 1;
  for (Picture& picture : pictures) {
    for (int plane = 0; plane < kPlaneCount; ++plane) {
      const MutablePlaneView view = picture.Plane(plane);
      for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
          state = state * 1664525 + 1013904223;
          view.Row(y)[x] = (state >> 31) != 0 ? 255 : 0;
        }
      }
    }
  }
  const auto finest =
      RoundTrip({.width = 64, .height = 48, .quantiser_i = 1, .quantiser_p = 1}, pictures);
  EXPECT_GT(finest.worst_luma_psnr, 45);
  RoundTrip({.width = 64, .height = 48, .quantiser_i = 31, .quantiser_p = 31}, pictures);
}

TEST(VideoEncoder, PlacesKeyFramesByGroupAndOnRequest) {
  const auto picture = StreetPictures(32, 32, 1).front();
  VideoEncoder encoder({.width = 32, .height = 32, .gop_length = 3});
  std::vector<WORD> types;
  for (int i = 0; i < 9; ++i) {
    types.push_back(encoder.Encode(picture.View(), i == 4).frame_type);
  }
  EXPECT_EQ(types, (std::vector<WORD>{0, 1, 1, 0, 0, 1, 1, 0, 1}));
}

TEST(VideoEncoder, RefusesSettingsAndPicturesOutOfRange) {
  const VideoEncoderSettings bad_settings[] = {
      {.width = 15, .height = 16},
      {.width = 16, .height = 4097},
      {.width = 16, .height = 16, .gop_length = 0},
      {.width = 16, .height = 16, .quantiser_i = 0},
      {.width = 16, .height = 16, .quantiser_p = 32},
  };
  for (const auto& settings : bad_settings) {
    EXPECT_THROW(VideoEncoder{settings}, std::invalid_argument);
  }
  VideoEncoder encoder({.width = 16, .height = 16});
  EXPECT_THROW(encoder.Encode(Picture(17, 16).View()), std::invalid_argument);
}

}  // namespace
}  // namespace noxcodec
