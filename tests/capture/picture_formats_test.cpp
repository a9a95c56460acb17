#include "capture/picture_formats.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace {

constexpr int (*kLookups[])(DWORD, DWORD*, DWORD*) = {zebxGetShowSize, zebxGetEncodeSize,
                                                      zebxGetCaptureSize};

TEST(PictureFormats, EveryTableAnswersWithTheHardwaresSizes) {
  // Frame size, standard, then the sizes shown, encoded and captured.
  constexpr std::array<DWORD, 8> kRows[] = {
      {0, 0, 160, 120, 160, 112, 160, 112},   {3, 0, 640, 480, 640, 240, 640, 240},
      {4, 0, 160, 128, 160, 128, 320, 240},   {6, 0, 320, 240, 160, 128, 320, 240},
      {8, 0, 704, 480, 720, 240, 704, 240},   {128, 1, 176, 144, 176, 144, 176, 144},
      {132, 1, 176, 144, 176, 144, 352, 288}, {134, 1, 352, 288, 176, 144, 352, 288},
      {136, 1, 704, 576, 720, 288, 704, 288},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(zebxGetVideoStd(row[0]), row[1]);
    for (std::size_t i = 0; i < 3; ++i) {
      std::pair<DWORD, DWORD> size;
      EXPECT_EQ(kLookups[i](row[0], &size.first, &size.second), 1);
      EXPECT_EQ(size, std::pair(row[2 + 2 * i], row[3 + 2 * i])) << row[0];
    }
  }
}

TEST(PictureFormats, OtherFrameSizesLeaveTheOutputsUntouched) {
  for (const DWORD frame_size : {9U, 127U, 137U, 256U, 0xFFFFFFFFU}) {
    EXPECT_EQ(zebxGetVideoStd(frame_size), 0xFFFFFFFF);
    for (const auto lookup : kLookups) {
      DWORD width = 11, height = 22;
      EXPECT_EQ(lookup(frame_size, &width, &height), 0);
      EXPECT_EQ(width + height, 33U);
    }
  }
}

}  // namespace
