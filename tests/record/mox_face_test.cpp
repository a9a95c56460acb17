#include "record/mox_face.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <vector>

#include "platform/os/graphics/graphics.h"
#include "tests/support/window_fixture.h"

namespace {

constexpr tag_ZEBCAMERAID kCamera = {3, 2};

// A device record of 3 * 2 pixels, face point (0x102, 5), index 7.
const std::vector<BYTE> kRecord = {9, 9, 9, 9, 3, 0, 2, 0, 2, 1, 5,
                                   0, 7, 0, 9, 9, 1, 2, 3, 4, 5, 255};

// Its luminance, whose bytes the grey picture has three times each.
std::vector<int> PixelsOf(const CMoxFace& face) {
  const auto count =
      static_cast<std::size_t>(face.GetSize().cx) * static_cast<std::size_t>(face.GetSize().cy);
  for (std::size_t i = 0; i < 3 * count; ++i) {
    EXPECT_EQ(face.GetFace()[i], face.GetYBuf()[i / 3]) << i;
  }
  return {face.GetYBuf(), face.GetYBuf() + count};
}

void ExpectNoPicture(const CMoxFace& face) {
  EXPECT_EQ(face.GetFace(), nullptr);
  EXPECT_EQ(face.GetYBuf(), nullptr);
}

TEST(MoxFace, IsMadeOfAWholeDeviceRecord) {
  CMoxFace face;
  ASSERT_EQ(face.Create(&kCamera, kRecord.data(), CTime(1000)), 1);
  EXPECT_EQ(face.GetSize(), (CSize{3, 2}));
  EXPECT_EQ(face.GetFacePoint(), (CPoint{0x102, 5}));
  EXPECT_EQ(face.GetDetectIndex(), 7);
  EXPECT_EQ(PixelsOf(face), (std::vector<int>{1, 2, 3, 4, 5, 255}));

  const auto create = [&](std::vector<BYTE> record) {
    face.Create(&kCamera, kRecord.data(), CTime(1));
    record.shrink_to_fit();
    return face.Create(nullptr, record.data(), record.data() + record.size(), CTime(2));
  };
  EXPECT_EQ(create(kRecord), 1);
  EXPECT_EQ(face.GetCameraID(), kCamera) << "null camera leaves the one before";
  std::vector<BYTE> no_rows = kRecord;
  no_rows[6] = 0;
  EXPECT_EQ(create(no_rows), 0);
  ExpectNoPicture(face);
  for (const std::ptrdiff_t bytes : {15, 21}) {
    EXPECT_EQ(create({kRecord.begin(), kRecord.begin() + bytes}), 0) << bytes;
    ExpectNoPicture(face);
  }
}

TEST(MoxFace, IsCutOutBottomUpInsideTheRowsWithAWidthOfWholeWords) {
  // 8 * 3 pixels in rows of 16 bytes, counting up from 0.
  std::vector<BYTE> picture(16 * 3);
  std::iota(picture.begin(), picture.end(), BYTE{0});
  CMoxFace face;
  const auto cut = [&](const CRect& rect, const CPoint* point = nullptr) {
    return face.Create(&kCamera, picture.data(), {8, 3}, rect, CTime(5), point);
  };
  const CPoint point = {4, 1};
  ASSERT_EQ(cut({2, 1, 6, 3}, &point), 1);
  EXPECT_EQ(face.GetSize(), (CSize{4, 2}));
  EXPECT_EQ(PixelsOf(face), (std::vector<int>{34, 35, 36, 37, 18, 19, 20, 21}));
  ASSERT_EQ(cut({12, 2, 17, 3}), 1);
  EXPECT_EQ(PixelsOf(face), (std::vector<int>{44, 45, 46, 47}));
  EXPECT_EQ(face.GetFacePoint(), point) << "null point leaves the one before";

  constexpr LONG kMax = std::numeric_limits<LONG>::max();
  constexpr LONG kMin = std::numeric_limits<LONG>::min();
  for (const CRect& rect :
       {CRect{0, 0, 3, 3}, CRect{-1, 0, 4, 2}, CRect{0, -1, 4, 2}, CRect{13, 0, 17, 2},
        CRect{0, 0, 4, 4}, CRect{kMin, kMin, kMax, kMax}, CRect{4, 2, 0, 0}}) {
    EXPECT_EQ(cut(rect), 0);
    ExpectNoPicture(face);
  }
}

using MoxFaceOnScreen = WindowTest;

TEST_F(MoxFaceOnScreen, IsDrawnIntoAWindow) {
  HWND window = Make(AddParameters, nullptr, {0, 0, 4, 4});
  CMoxFace face;
  EXPECT_EQ(face.Show(window, {0, 0, 3, 2}), 0) << "no picture";
  face.Create(nullptr, kRecord.data(), CTime());
  ASSERT_EQ(face.Show(window, {1, 2, 4, 4}), 1);
  HDC dc = os::GetDC(window);
  EXPECT_EQ(os::GetPixel(dc, 1, 2), 0x040404U) << "the last row on top";
  EXPECT_EQ(os::GetPixel(dc, 3, 3), 0x030303U);
  os::ReleaseDC(window, dc);
  os::DestroyWindow(window);
  EXPECT_EQ(face.Show(window, {0, 0, 3, 2}), 0);
}

}  // namespace
