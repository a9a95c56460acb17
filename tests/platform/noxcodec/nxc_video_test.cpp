// The video half of noxcodec.h: handles, output formats, scaling and post-processing.
#include "platform/noxcodec/noxcodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <tuple>

#include "tests/platform/noxcodec/picture_measures.h"

using namespace zebx;

namespace {

using noxcodec::Picture;

// A decoder handle that has decoded one picture.
class Decoder {
 public:
  Decoder(DWORD width, DWORD height, const Picture& picture, int quantiser = 4) {
    EXPECT_EQ(nxcCreateVideoDecoder(&m_handle, 1, width, height, 0), 0);
    noxcodec::VideoEncoder encoder(
        {.width = picture.Width(), .height = picture.Height(), .quantiser_i = quantiser});
    const auto packet = encoder.Encode(picture.View());
    EXPECT_EQ(nxcDecodeVideo(m_handle, packet.frame_type, packet.data.data(),
                             static_cast<DWORD>(packet.data.size())),
              0);
  }
  ~Decoder() { nxcDestroyHandle(m_handle); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  NxcHandle Handle() const { return m_handle; }

 private:
  NxcHandle m_handle = nullptr;
};

// Left half black and right half white, the lower quarter red.
Picture Flag(int width, int height) {
  return DrawPicture(width, height, [&](int plane, int x, int y) {
    const int scale = plane == noxcodec::kLuma ? 1 : 2;
    constexpr std::array<int, 3> kRed = {81, 90, 240};
    if (4 * y * scale >= 3 * height) return kRed.at(static_cast<std::size_t>(plane));
    return plane != noxcodec::kLuma ? 128 : 2 * x < width ? 16 : 235;
  });
}

TEST(NxcVideo, RefusesWhatItCannotDoAndWritesNothing) {
  NxcHandle empty = nullptr, audio = nullptr;
  EXPECT_NE(nxcCreateVideoDecoder(&empty, 1, 352, 4097, 0), 0);
  ASSERT_EQ(nxcCreateVideoDecoder(&empty, 1, 32, 32, 0), 0);
  ASSERT_EQ(nxcCreateAudioDecoder(&audio, 0), 0);
  std::array<BYTE, 32 * 32 * 4> buffer;
  buffer.fill(7);
  const Decoder decoder(32, 32, Flag(32, 32));
  const std::tuple<NxcHandle, DWORD, int> cases[] = {
      {empty, kNxcFormatBgrx, 128},  // no picture yet
      {audio, kNxcFormatBgrx, 128},
      {decoder.Handle(), 3, 128},
      {decoder.Handle(), kNxcFormatBgrx, -127},
      {decoder.Handle(), kNxcFormatI420, -32},
  };
  for (const auto& [handle, format, pitch] : cases) {
    EXPECT_NE(nxcGetVideo(handle, buffer.data(), format, pitch, 0), 0) << pitch;
  }
  EXPECT_EQ(std::count(buffer.begin(), buffer.end(), 7), std::ssize(buffer));
  nxcDestroyHandle(empty);
  nxcDestroyHandle(audio);
}

TEST(NxcVideo, ConvertsColoursAndScalesToTheSizeAskedFor) {
  for (const auto& [width, height] : {std::pair{64, 48}, {32, 32}, {136, 80}}) {
    const Decoder decoder(64, 48, Flag(width, height));
    constexpr int kPitch = 64 * 4 + 12;
    std::vector<BYTE> buffer(kPitch * 48);
    ASSERT_EQ(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatBgrx, kPitch, 0), 0);
    // Where, and how much of blue, green and red.
    constexpr std::array<int, 5> kPixels[] = {
        {5, 5, 0, 0, 0}, {60, 5, 255, 255, 255}, {32, 46, 0, 0, 254}};
    for (const auto& [x, y, blue, green, red] : kPixels) {
      const BYTE* const pixel = buffer.data() + y * kPitch + x * 4;
      EXPECT_NEAR(pixel[0], blue, 6);
      EXPECT_NEAR(pixel[1], green, 6);
      EXPECT_NEAR(pixel[2], red, 6);
    }
  }
}

TEST(NxcVideo, NegativePitchReversesTheRowsInTheSameBuffer) {
  const Decoder decoder(48, 32, StreetPictures(48, 32, 1).front());
  constexpr int kPitch = 48 * 4 + 4;
  std::vector<BYTE> upright(kPitch * 32, 9), reversed(kPitch * 32, 9);
  ASSERT_EQ(nxcGetVideo(decoder.Handle(), upright.data(), kNxcFormatBgrx, kPitch, 0), 0);
  ASSERT_EQ(nxcGetVideo(decoder.Handle(), reversed.data(), kNxcFormatBgrx, -kPitch, 0), 0);
  for (int y = 0; y < 32; ++y) {
    EXPECT_TRUE(std::equal(upright.begin() + y * kPitch, upright.begin() + (y + 1) * kPitch,
                           reversed.begin() + (31 - y) * kPitch))
        << y;
  }
}

TEST(NxcVideo, PlanarOutputHasItsPlanesOneAfterTheOther) {
  const Picture picture = Flag(33, 17);
  const Decoder decoder(33, 17, picture, 1);
  std::vector<BYTE> buffer(35 * 17 + 2 * 18 * 9);
  ASSERT_EQ(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatI420, 35, 0), 0);
  const BYTE* const chroma = buffer.data() + 35 * 17;
  EXPECT_GT(Psnr({buffer.data(), 33, 17, 35}, picture.Plane(noxcodec::kLuma)), 45);
  EXPECT_GT(Psnr({chroma, 17, 9, 18}, picture.Plane(noxcodec::kCb)), 45);
  EXPECT_GT(Psnr({chroma + 18 * 9, 17, 9, 18}, picture.Plane(noxcodec::kCr)), 45);
}

// The height of the steps at the block borders of a picture of 176x144, across or down.
int Blockiness(const std::vector<BYTE>& luma, bool across) {
  int steps = 0;
  for (std::size_t at = 8 * 176; at < 176 * 144; ++at) {
    if ((across ? at % 176 : at / 176) % 8 != 0 || at % 176 == 0) continue;
    steps += std::abs(luma[at] - luma[at - (across ? 1 : 176)]);
  }
  return steps;
}

TEST(NxcVideo, DeblockingBitsSmoothTheBlockBordersOfTheirDirection) {
  const Decoder decoder(176, 144, StreetPictures(176, 144, 1).front(), 31);
  const auto luma = [&](DWORD post_processing) {
    std::vector<BYTE> buffer(176 * 144 * 3 / 2);
    nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatI420, 176, post_processing);
    return buffer;
  };
  const auto plain = luma(0);
  const auto horizontal = luma(kNxcPostDeblockHorizontal);
  const auto vertical = luma(kNxcPostDeblockVertical);
  EXPECT_LT(Blockiness(horizontal, true), Blockiness(vertical, true));
  EXPECT_LT(Blockiness(vertical, false), Blockiness(horizontal, false));
  const auto both = luma(kNxcPostPlayback);
  EXPECT_LT(Blockiness(both, true), Blockiness(plain, true));
  EXPECT_LT(Blockiness(both, false), Blockiness(plain, false));
  EXPECT_EQ(luma(0x18), plain) << "the reserved bits change nothing";
}

}  // namespace
