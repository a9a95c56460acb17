#include "platform/noxdisplay/noxdisplay.h"

#include <gtest/gtest.h>

#include "platform/noxdisplay/software/display_control.h"
#include "tests/support/canvas.h"

using namespace zebx;

namespace {

TEST(DrawDib, DrawsUnpaddedRowsFromTheBottomUpScaledWithMeans) {
  // Rows of six pixels, which take no multiple of 4 bytes, and of four, which do.
  BYTE picture[6 * 2 * 3] = {};
  for (BYTE i = 0; i < 12; ++i) picture[3 * i + 2] = static_cast<BYTE>(2 * i);
  for (const DWORD width : {6U, 4U}) {
    const Canvas canvas(2, 32, 2);
    const CSize size = {static_cast<LONG>(width), 2};
    const CRect whole = {0, 0, 2, 2};
    ASSERT_EQ(noxshowDrawDib(picture, &size, canvas.m_dc, &whole), 0);
    const DWORD left = width / 2 - 1, right = left + width;
    EXPECT_EQ(canvas.Pixels(), (Colors{left + 2 * width, right + 2 * width, left, right}));
  }
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
