#include "capture/picture_formats.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using Sizes = std::array<DWORD, 6>;

// Width and height as shown, encoded and captured; of a refused frame size, the 7s stay.
Sizes SizesOf(DWORD frame_size, int expected_answer) {
  Sizes sizes = {7, 7, 7, 7, 7, 7};
  EXPECT_EQ(zebxGetShowSize(frame_size, sizes.data(), &sizes[1]), expected_answer) << frame_size;
  EXPECT_EQ(zebxGetEncodeSize(frame_size, &sizes[2], &sizes[3]), expected_answer) << frame_size;
  EXPECT_EQ(zebxGetCaptureSize(frame_size, &sizes[4], &sizes[5]), expected_answer) << frame_size;
  return sizes;
}

TEST(PictureFormats, AnswerWithTheHardwaresSizesAndNothingElse) {
  EXPECT_EQ(SizesOf(0, 1), (Sizes{160, 120, 160, 112, 160, 112}));
  EXPECT_EQ(SizesOf(3, 1), (Sizes{640, 480, 640, 240, 640, 240}));
  EXPECT_EQ(SizesOf(6, 1), (Sizes{320, 240, 160, 128, 320, 240}));
  EXPECT_EQ(SizesOf(8, 1), (Sizes{704, 480, 720, 240, 704, 240}));
  EXPECT_EQ(SizesOf(128, 1), (Sizes{176, 144, 176, 144, 176, 144}));
  EXPECT_EQ(SizesOf(132, 1), (Sizes{176, 144, 176, 144, 352, 288}));
  EXPECT_EQ(SizesOf(136, 1), (Sizes{704, 576, 720, 288, 704, 288}));
  for (const DWORD frame_size : {0U, 8U}) EXPECT_EQ(zebxGetVideoStd(frame_size), 0U);
  for (const DWORD frame_size : {128U, 136U}) EXPECT_EQ(zebxGetVideoStd(frame_size), 1U);
  for (const DWORD frame_size : {9U, 127U, 137U, 256U, 0xFFFFFFFFU}) {
    EXPECT_EQ(SizesOf(frame_size, 0), (Sizes{7, 7, 7, 7, 7, 7}));
    EXPECT_EQ(zebxGetVideoStd(frame_size), 0xFFFFFFFF);
  }
}

}  // namespace
