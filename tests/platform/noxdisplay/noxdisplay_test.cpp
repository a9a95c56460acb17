#include "platform/noxdisplay/noxdisplay.h"

#include <gtest/gtest.h>

#include "platform/noxdisplay/software/display_control.h"
#include "tests/support/canvas.h"

using namespace zebx;

namespace {

TEST(DrawDib, DrawsUnpaddedRowsFromTheBottomUpScaledWithMeans) {
  // Rows of three pixels, which take no multiple of 4 bytes, and of four, which do.
  for (const LONG width : {3, 4}) {
    std::vector<BYTE> picture(static_cast<std::size_t>(width) * 2 * 3);
    Colors expected;
    for (LONG i = 0; i < 2 * width; ++i)
      picture[static_cast<std::size_t>(3 * i + 2)] = static_cast<BYTE>(i + 1);
    for (const LONG row : {width, width, 0, 0}) {
      for (LONG x = 0; x < 2 * width; ++x) expected.push_back(static_cast<DWORD>(row + x / 2 + 1));
    }
    const Canvas canvas(2 * width, 32, 4);
    const CSize size = {width, 2};
    const CRect whole = {0, 0, 2 * width, 4};
    ASSERT_EQ(noxshowDrawDib(picture.data(), &size, canvas.m_dc, &whole), 0);
    EXPECT_EQ(canvas.Pixels(), expected);
  }
  const BYTE picture[] = {0, 0, 100, 0, 0, 200};
  const CSize size = {2, 1};
  const CRect one_pixel = {1, 0, 2, 1};
  const Canvas canvas(2);
  ASSERT_EQ(noxshowDrawDib(picture, &size, canvas.m_dc, &one_pixel), 0);
  EXPECT_EQ(canvas.Pixels(), (Colors{0, 150}));
}

TEST(Watermark, IsTheLastPictureThatWasWhole) {
  const std::vector<BYTE> pixels = {1, 2, 3, 4, 5, 6, 0, 0};
  ASSERT_EQ(noxshowSetWatermark(pixels.data(), 8, 2, 1), 0);
  EXPECT_NE(noxshowSetWatermark(pixels.data(), 8, 0xFFFFFFFF, 0xFFFFFFFF), 0);
  const auto watermark = noxdisplay::CurrentWatermark();
  ASSERT_TRUE(watermark);
  EXPECT_EQ(watermark->m_pixels, pixels);
}

}  // namespace
