// The video half of noxcodec.h: handles, output formats, scaling and post-processing.
#include "platform/noxcodec/noxcodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "tests/platform/noxcodec/picture_measures.h"

namespace {

using noxcodec::Picture;
using Pixel = std::array<BYTE, 4>;

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
  Picture picture(width, height);
  for (int plane = 0; plane < noxcodec::kPlaneCount; ++plane) {
    const auto view = picture.Plane(plane);
    for (int y = 0; y < view.height; ++y) {
      const bool red = 4 * y >= 3 * view.height;
      const std::array<int, 3> red_values = {81, 90, 240};
      for (int x = 0; x < view.width; ++x) {
        const int grey = plane != noxcodec::kLuma ? 128 : 2 * x < view.width ? 16 : 235;
        view.Row(y)[x] =
            static_cast<BYTE>(red ? red_values[static_cast<std::size_t>(plane)] : grey);
      }
    }
  }
  return picture;
}

void ExpectNear(const Pixel& pixel, int blue, int green, int red) {
  EXPECT_NEAR(pixel[0], blue, 6);
  EXPECT_NEAR(pixel[1], green, 6);
  EXPECT_NEAR(pixel[2], red, 6);
}

TEST(NxcVideo, CreationRefusesSizesOutOfRange) {
  NxcHandle handle = nullptr;
  EXPECT_NE(nxcCreateVideoDecoder(nullptr, 1, 352, 288, 0), 0);
  EXPECT_NE(nxcCreateVideoDecoder(&handle, 1, 0, 288, 0), 0);
  EXPECT_NE(nxcCreateVideoDecoder(&handle, 1, 352, 4097, 0), 0);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(nxcDestroyHandle(nullptr), 0);
}

TEST(NxcVideo, GetVideoRefusesWhatItCannotDoAndWritesNothing) {
  std::array<BYTE, 32 * 32 * 4> buffer;
  buffer.fill(7);
  NxcHandle empty = nullptr;
  ASSERT_EQ(nxcCreateVideoDecoder(&empty, 1, 32, 32, 0), 0);
  EXPECT_NE(nxcGetVideo(empty, buffer.data(), kNxcFormatBgrx, 128, 0), 0) << "no picture yet";
  nxcDestroyHandle(empty);

  const Decoder decoder(32, 32, Flag(32, 32));
  EXPECT_NE(nxcGetVideo(decoder.Handle(), nullptr, kNxcFormatBgrx, 128, 0), 0);
  EXPECT_NE(nxcGetVideo(decoder.Handle(), buffer.data(), 3, 128, 0), 0);
  EXPECT_NE(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatBgrx, 127, 0), 0);
  EXPECT_NE(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatBgrx, -127, 0), 0);
  EXPECT_NE(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatI420, 31, 0), 0);
  EXPECT_NE(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatI420, -32, 0), 0);
  EXPECT_EQ(std::count(buffer.begin(), buffer.end(), 7), std::ssize(buffer));
}

TEST(NxcVideo, ConvertsColoursAndScalesToTheSizeAskedFor) {
  constexpr std::pair<int, int> kCodedSizes[] = {{64, 48}, {32, 32}, {136, 80}};
  for (const auto& [width, height] : kCodedSizes) {
    const Decoder decoder(64, 48, Flag(width, height));
    constexpr int kPitch = 64 * 4 + 12;
    std::vector<BYTE> buffer(kPitch * 48);
    ASSERT_EQ(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatBgrx, kPitch, 0), 0);
    const auto pixel = [&](int x, int y) {
      Pixel value;
      std::copy_n(buffer.begin() + y * kPitch + x * 4, 4, value.begin());
      return value;
    };
    ExpectNear(pixel(5, 5), 0, 0, 0);
    ExpectNear(pixel(60, 5), 255, 255, 255);
    ExpectNear(pixel(32, 46), 0, 0, 254);
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
  constexpr int kPitch = 35, kChromaPitch = 18;
  std::vector<BYTE> buffer(kPitch * 17 + 2 * kChromaPitch * 9);
  ASSERT_EQ(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatI420, kPitch, 0), 0);
  const BYTE* const luma = buffer.data();
  const BYTE* const cb = luma + kPitch * 17;
  const BYTE* const cr = cb + kChromaPitch * 9;
  EXPECT_GT(Psnr({luma, 33, 17, kPitch}, picture.Plane(noxcodec::kLuma)), 45);
  EXPECT_GT(Psnr({cb, 17, 9, kChromaPitch}, picture.Plane(noxcodec::kCb)), 45);
  EXPECT_GT(Psnr({cr, 17, 9, kChromaPitch}, picture.Plane(noxcodec::kCr)), 45);
}

// The mean height of the steps at block borders, beyond that of the steps beside them.
double Blockiness(const std::vector<BYTE>& luma, int width, int height, bool across) {
  double at_borders = 0, beside = 0;
  const int stride = across ? 1 : width;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int place = across ? x : y;
      if (place < 8 || place % 8 > 1 || place + 1 >= (across ? width : height)) continue;
      const int at = y * width + x;
      const int step = std::abs(luma[static_cast<std::size_t>(at)] -
                                luma[static_cast<std::size_t>(at - stride)]);
      (place % 8 == 0 ? at_borders : beside) += step;
    }
  }
  return (at_borders - beside) / (width * height);
}

TEST(NxcVideo, DeblockingBitsSmoothTheBlockBordersOfTheirDirection) {
  constexpr int kWidth = 176, kHeight = 144;
  const Decoder decoder(kWidth, kHeight, StreetPictures(kWidth, kHeight, 1).front(), 31);
  const auto luma = [&](DWORD post_processing) {
    std::vector<BYTE> buffer(kWidth * kHeight * 3 / 2);
    EXPECT_EQ(nxcGetVideo(decoder.Handle(), buffer.data(), kNxcFormatI420, kWidth, post_processing),
              0);
    return buffer;
  };
  const auto plain = luma(0), across = luma(kNxcPostDeblockHorizontal),
             down = luma(kNxcPostDeblockVertical), both = luma(kNxcPostPlayback);
  const double plain_across = Blockiness(plain, kWidth, kHeight, true);
  const double plain_down = Blockiness(plain, kWidth, kHeight, false);
  EXPECT_LT(Blockiness(across, kWidth, kHeight, true), plain_across);
  EXPECT_LT(Blockiness(down, kWidth, kHeight, false), plain_down);
  EXPECT_LT(Blockiness(both, kWidth, kHeight, true), plain_across);
  EXPECT_LT(Blockiness(both, kWidth, kHeight, false), plain_down);
  EXPECT_EQ(luma(0x18), plain) << "the reserved bits change nothing";
}

TEST(NxcVideo, HandlesOfTheOtherKindAreRefused) {
  NxcHandle audio = nullptr, video = nullptr;
  ASSERT_EQ(nxcCreateAudioDecoder(&audio, 0), 0);
  ASSERT_EQ(nxcCreateVideoDecoder(&video, 1, 16, 16, 0), 0);
  const BYTE byte = 0;
  DWORD samples = 0;
  EXPECT_NE(nxcDecodeVideo(audio, 0, &byte, 1), 0);
  EXPECT_NE(nxcDecodeVideo(video, 0, nullptr, 1), 0);
  EXPECT_NE(nxcDecodeAudio(video, nullptr, 100, nullptr, &samples), 0);
  nxcDestroyHandle(audio);
  nxcDestroyHandle(video);
}

}  // namespace
