#include "capture/picture_formats.h"

#include <gtest/gtest.h>

namespace {

struct Row {
  DWORD m_frame_size;
  DWORD m_standard;
  DWORD m_sizes[6];  // shown, encoded, captured
};

constexpr Row kRows[] = {
    {0, 0, {160, 120, 160, 112, 160, 112}},   {1, 0, {240, 176, 240, 176, 240, 176}},
    {2, 0, {320, 240, 320, 240, 320, 240}},   {3, 0, {640, 480, 640, 240, 640, 240}},
    {4, 0, {160, 128, 160, 128, 320, 240}},   {5, 0, {320, 240, 320, 240, 320, 240}},
    {6, 0, {320, 240, 160, 128, 320, 240}},   {7, 0, {640, 480, 320, 240, 320, 240}},
    {8, 0, {704, 480, 720, 240, 704, 240}},   {128, 1, {176, 144, 176, 144, 176, 144}},
    {129, 1, {256, 192, 256, 192, 256, 192}}, {130, 1, {352, 288, 352, 288, 352, 288}},
    {131, 1, {704, 576, 704, 288, 704, 288}}, {132, 1, {176, 144, 176, 144, 352, 288}},
    {133, 1, {352, 288, 352, 288, 352, 288}}, {134, 1, {352, 288, 176, 144, 352, 288}},
    {135, 1, {704, 576, 352, 288, 352, 288}}, {136, 1, {704, 576, 720, 288, 704, 288}},
};

constexpr int (*kLookups[])(DWORD, DWORD*, DWORD*) = {zebxGetShowSize, zebxGetEncodeSize,
                                                      zebxGetCaptureSize};

TEST(PictureFormats, EveryFrameSizeHasItsStandardAndSizes) {
  for (const Row& row : kRows) {
    EXPECT_EQ(zebxGetVideoStd(row.m_frame_size), row.m_standard);
    for (int i = 0; i < 3; ++i) {
      DWORD width = 0;
      DWORD height = 0;
      EXPECT_EQ(kLookups[i](row.m_frame_size, &width, &height), 1);
      EXPECT_EQ(width, row.m_sizes[2 * i]) << row.m_frame_size;
      EXPECT_EQ(height, row.m_sizes[2 * i + 1]) << row.m_frame_size;
    }
  }
}

TEST(PictureFormats, OtherFrameSizesLeaveTheOutputsUntouched) {
  for (const DWORD frame_size : {9U, 127U, 137U, 256U, 0xFFFFFFFFU}) {
    EXPECT_EQ(zebxGetVideoStd(frame_size), 0xFFFFFFFF);
    for (const auto lookup : kLookups) {
      DWORD width = 11;
      DWORD height = 22;
      EXPECT_EQ(lookup(frame_size, &width, &height), 0);
      EXPECT_EQ(width + height, 33U);
      EXPECT_EQ(lookup(2, nullptr, &height), 0);
    }
  }
}

}  // namespace
