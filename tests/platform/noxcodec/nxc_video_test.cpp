// How decoded pictures are shown: what is refused, pitch, scaling, colours and deblocking.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>

#include "platform/noxcodec/software/picture_output.h"
#include "platform/noxcodec/software/picture_scaler.h"
#include "tests/platform/noxcodec/picture_measures.h"

namespace zebx::noxcodec {
namespace {

// A decoder that has decoded one picture.
OwnedDecoder Decoded(DWORD width, DWORD height, const Picture& picture) {
  const auto packet = EncodeAll(
      {.width = picture.Width(), .height = picture.Height(), .quantiser_i = 1}, {picture})[0];
  auto decoder = MakeVideoDecoder(width, height);
  const auto length = static_cast<DWORD>(packet.size());
  EXPECT_EQ(nxcDecodeVideo(decoder.get(), 0, packet.data(), length), 0);
  return decoder;
}

// Black at the top left, white at the bottom right, different greys in the other corners.
Picture Corners(int width, int height) {
  return DrawPicture(width, height, [&](int plane, int x, int y) {
    return plane != kLuma ? 128 : 16 + (2 * x < width ? 0 : 100) + (2 * y < height ? 0 : 119);
  });
}

TEST(NxcVideo, RefusesWhatItCannotDoAndWritesNothing) {
  EXPECT_EQ(MakeVideoDecoder(352, 4097), nullptr);
  const auto audio = MakeAudioDecoder(), empty = MakeVideoDecoder(32, 32);
  const auto decoder = Decoded(32, 32, Corners(32, 32));
  std::vector<BYTE> buffer(32 * 32 * 4, 7);
  const std::tuple<NxcHandle, DWORD, int> cases[] = {{empty.get(), kNxcFormatBgrx, 128},
                                                     {audio.get(), kNxcFormatBgrx, 128},
                                                     {decoder.get(), 3, 128},
                                                     {decoder.get(), kNxcFormatBgrx, -127},
                                                     {decoder.get(), kNxcFormatI420, -32}};
  for (const auto& [handle, format, pitch] : cases) {
    EXPECT_NE(nxcGetVideo(handle, buffer.data(), format, pitch, 0), 0) << pitch;
  }
  EXPECT_EQ(std::count(buffer.begin(), buffer.end(), 7), std::ssize(buffer));
}

// Pictures of the size asked for and of others, in rows from the top and from the bottom.
TEST(NxcVideo, ShowsPicturesInTheSizeAskedForWithEitherPitch) {
  constexpr int kPitch = 64 * 4 + 12;
  for (const auto& [width, height] : {std::pair{64, 48}, {32, 32}, {136, 80}, {64, 20}, {20, 48}}) {
    const auto decoder = Decoded(64, 48, Corners(width, height));
    std::vector<BYTE> upright(kPitch * 48, 9), reversed(upright);
    ASSERT_EQ(nxcGetVideo(decoder.get(), upright.data(), kNxcFormatBgrx, kPitch, 0), 0);
    ASSERT_EQ(nxcGetVideo(decoder.get(), reversed.data(), kNxcFormatBgrx, -kPitch, 0), 0);
    constexpr std::array<WORD, 3> kGreys[] = {{5, 5, 0}, {60, 5, 116}, {5, 46, 139}, {60, 46, 255}};
    for (const auto& [x, y, grey] : kGreys)
      EXPECT_NEAR(upright[std::size_t{y} * kPitch + x * 4U], grey, 6);
    for (int y = 0; y < 48; ++y) {
      const auto row = upright.begin() + y * kPitch;
      EXPECT_TRUE(std::equal(row, row + kPitch, reversed.begin() + (47 - y) * kPitch)) << y;
      EXPECT_EQ(std::count(row + 64 * 4, row + kPitch, 9), 12) << "between rows";
    }
    std::vector<BYTE> planes(65 * 48 + 2 * 33 * 24, 9);
    ASSERT_EQ(nxcGetVideo(decoder.get(), planes.data(), kNxcFormatI420, 65, 0), 0);
    for (const std::size_t at : {65U * 47 + 63, 65U * 48, 65U * 48 + 2U * 33 * 24 - 2}) {
      EXPECT_NEAR(planes[at], at < 65 * 48 ? 235 : 128, 3) << at;
    }
    EXPECT_EQ(std::count(planes.begin(), planes.end(), 9), 48 + 2 * 24) << "between rows";
  }
}

TEST(PictureScaler, ShrinksByTheMeanAndEnlargesFromPixelToPixel) {
  PictureScaler scaler;
  Picture smaller(3, 2), larger(8, 3);
  scaler.Scale(DrawPicture(6, 4, [](int, int x, int y) { return 41 * x + 10 * y; }).View(),
               smaller);
  EXPECT_EQ(smaller.Plane(kLuma).Row(0)[0], 26);
  EXPECT_EQ(smaller.Plane(kLuma).Row(1)[2], 210);

  scaler.Scale(DrawPicture(2, 1, [](int, int x, int) { return 200 * x; }).View(), larger);
  const BYTE* const row = larger.Plane(kLuma).Row(2);
  EXPECT_EQ(std::vector<int>(row, row + 8), (std::vector<int>{0, 0, 25, 75, 125, 175, 200, 200}));
}

// Strong colours are as likely as all others together; the width is odd and that of many vectors.
TEST(NxcVideo, HasTheColoursOfBt601) {
  constexpr int kWidth = 1537, kHeight = 35;
  DWORD dice = 1;
  const Picture picture = DrawPicture(kWidth, kHeight, [&](int, int, int) {
    return Roll(dice, 1) == 0 ? 255 * Roll(dice, 1) : Roll(dice, 8);
  });
  std::vector<BYTE> pixels(kWidth * kHeight * 4);
  WriteBgrx(picture.View(), pixels.data(), kWidth * 4);
  for (int i = 0; i < kWidth * kHeight; ++i) {
    const int x = i % kWidth, y = i / kWidth;
    const auto above = [&](int zero, int plane, int scale) -> int {
      return picture.Plane(plane).Row(y / scale)[x / scale] - zero;
    };
    const double grey = above(16, kLuma, 1) * 255 / 219.0;
    const double cb = above(128, kCb, 2) * 255 / 112.0, cr = above(128, kCr, 2) * 255 / 112.0;
    const double green = grey - (0.114 * 0.886 * cb + 0.299 * 0.701 * cr) / 0.587;
    const std::array<double, 4> wanted = {grey + 0.886 * cb, green, grey + 0.701 * cr, 255};
    for (std::size_t byte = 0; byte < wanted.size(); ++byte) {
      const int got = pixels[4 * static_cast<std::size_t>(i) + byte];
      ASSERT_NEAR(got, std::clamp(wanted[byte], 0.0, 255.0), 1) << x << ' ' << y << ' ' << byte;
    }
  }
}

}  // namespace
}  // namespace zebx::noxcodec
