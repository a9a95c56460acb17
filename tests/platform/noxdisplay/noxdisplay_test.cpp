#include "platform/noxdisplay/noxdisplay.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/noxdisplay/software/display_control.h"
#include "platform/os/graphics/graphics.h"
#include "platform/os/windows/windows.h"

using namespace zebx;

namespace {

class DrawDib : public testing::Test {
 protected:
  DrawDib()
      : m_window(os::CreateWindow(nullptr, "faces", {0, 0, 8, 4},
                                  [](HWND, UINT, WPARAM, LPARAM) { return LRESULT{0}; })),
        m_dc(os::GetDC(m_window)) {}
  void TearDown() override {
    os::ReleaseDC(m_window, m_dc);
    os::DestroyWindow(m_window);
  }

  HWND m_window;
  HDC m_dc;
};

TEST_F(DrawDib, DrawsUnpaddedRowsFromTheBottomUpScaled) {
  // Rows of three pixels, which take no multiple of 4 bytes, and of four, which do.
  for (const LONG width : {3, 4}) {
    std::vector<BYTE> picture(static_cast<std::size_t>(width) * 2 * 3);
    for (std::size_t i = 0; i < picture.size() / 3; ++i) {
      picture[3 * i + 2] = static_cast<BYTE>(i + 1);
    }
    const CSize size = {width, 2};
    const CRect whole = {0, 0, 2 * width, 4};
    ASSERT_EQ(noxshowDrawDib(picture.data(), &size, m_dc, &whole), 0);
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 2 * width; ++x) {
        const int expected = (y < 2 ? width : 0) + x / 2 + 1;
        EXPECT_EQ(os::GetPixel(m_dc, x, y), static_cast<DWORD>(expected)) << x << ", " << y;
      }
    }
  }
  // Averages what it has no room for.
  const BYTE picture[] = {0, 0, 100, 0, 0, 200};
  const CSize size = {2, 1};
  const CRect one_pixel = {7, 3, 8, 4};
  ASSERT_EQ(noxshowDrawDib(picture, &size, m_dc, &one_pixel), 0);
  EXPECT_EQ(os::GetPixel(m_dc, 7, 3), 150U);
}

TEST_F(DrawDib, RefusesWhatIsNoPictureOrNoPlace) {
  const std::vector<BYTE> picture(12);
  const CSize size = {2, 2};
  const CRect whole = {0, 0, 6, 4};
  const CRect inside_out = {6, 4, 0, 0};
  EXPECT_NE(noxshowDrawDib(nullptr, &size, m_dc, &whole), 0);
  EXPECT_NE(noxshowDrawDib(picture.data(), &size, nullptr, &whole), 0);
  EXPECT_NE(noxshowDrawDib(picture.data(), &size, m_dc, &inside_out), 0);
  for (const CSize bad : {CSize{0, 2}, CSize{2, 0}, CSize{-2, 2}, CSize{2, -2}}) {
    EXPECT_NE(noxshowDrawDib(picture.data(), &bad, m_dc, &whole), 0);
  }
}

TEST(Watermark, IsTheLastPictureThatWasWhole) {
  const std::vector<BYTE> pixels = {1, 2, 3, 4, 5, 6, 0, 0};
  ASSERT_EQ(noxshowSetWatermark(pixels.data(), 8, 2, 1), 0);
  EXPECT_NE(noxshowSetWatermark(nullptr, 8, 2, 1), 0);
  EXPECT_NE(noxshowSetWatermark(pixels.data(), 6, 2, 1), 0) << "rows without padding";
  EXPECT_NE(noxshowSetWatermark(pixels.data(), 8, 8, 1), 0) << "8 bits a pixel";
  EXPECT_NE(noxshowSetWatermark(pixels.data(), 0, 0, 0), 0);
  EXPECT_NE(noxshowSetWatermark(pixels.data(), 8, 0xFFFFFFFF, 0xFFFFFFFF), 0);
  const auto watermark = noxdisplay::CurrentWatermark();
  ASSERT_TRUE(watermark);
  EXPECT_EQ(watermark->m_width, 2U);
  EXPECT_EQ(watermark->m_height, 1U);
  EXPECT_EQ(watermark->m_pixels, pixels);
}

TEST(Surfaces, AreLostOnRequestUntilRestored) {
  EXPECT_EQ(noxshowIsLost(), 0);
  noxdisplay::LoseSurfaces();
  EXPECT_NE(noxshowIsLost(), 0);
  EXPECT_EQ(noxshowRestore(), 0);
  EXPECT_EQ(noxshowIsLost(), 0);
}

}  // namespace
