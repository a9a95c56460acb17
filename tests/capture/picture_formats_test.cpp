#include "capture/picture_formats.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using Sizes = std::array<DWORD, 6>;

// Width and height as shown, encoded and captured.
Sizes SizesOf(DWORD frame_size, int expected_answer = 1) {
  Sizes sizes{};
  EXPECT_EQ(zebxGetShowSize(frame_size, sizes.data(), &sizes[1]), expected_answer) << frame_size;
  zebxGetEncodeSize(frame_size, &sizes[2], &sizes[3]);
  zebxGetCaptureSize(frame_size, &sizes[4], &sizes[5]);
  return sizes;
}

TEST(PictureFormats, AnswerWithTheHardwaresSizesAndNothingElse) {
  EXPECT_EQ(SizesOf(0), (Sizes{160, 120, 160, 112, 160, 112}));
  EXPECT_EQ(SizesOf(8), (Sizes{704, 480, 720, 240, 704, 240}));
  EXPECT_EQ(SizesOf(128), (Sizes{176, 144, 176, 144, 176, 144}));
  EXPECT_EQ(SizesOf(136), (Sizes{704, 576, 720, 288, 704, 288}));
  for (const DWORD frame_size : {9U, 127U, 137U, 256U}) EXPECT_EQ(SizesOf(frame_size, 0), Sizes{});
}

}  // namespace
