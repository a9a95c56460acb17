#include "record/mox_face.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <vector>

#include "platform/os/graphics.h"
#include "platform/os/windows.h"

namespace {

constexpr tag_ZEBCAMERAID kCamera = {3, 2};

// A device record of 3 * 2 pixels, face point (0x102, 5), index 7.
const std::vector<BYTE> kRecord = {9, 9, 9, 9, 3, 0, 2, 0, 2, 1, 5,
                                   0, 7, 0, 9, 9, 1, 2, 3, 4, 5, 255};

std::vector<int> Luminance(const CMoxFace& face) {
  const auto count =
      static_cast<std::size_t>(face.GetSize().cx) * static_cast<std::size_t>(face.GetSize().cy);
  return {face.GetYBuf(), face.GetYBuf() + count};
}

void ExpectGreyOf(const CMoxFace& face) {
  const auto luminance = Luminance(face);
  for (std::size_t i = 0; i < 3 * luminance.size(); ++i) {
    ASSERT_EQ(face.GetFace()[i], luminance[i / 3]) << i;
  }
}

TEST(MoxFace, IsMadeOfADeviceRecord) {
  CMoxFace face;
  ASSERT_EQ(face.Create(&kCamera, kRecord.data(), CTime(1000)), 1);
  EXPECT_EQ(face.GetCameraID().m_board, 3);
  EXPECT_EQ(face.GetCameraID().m_camera, 2);
  EXPECT_EQ(face.GetTime(), CTime(1000));
  EXPECT_EQ(face.GetSize(), (CSize{3, 2}));
  EXPECT_EQ(face.GetFacePoint(), (CPoint{0x102, 5}));
  EXPECT_EQ(face.GetDetectIndex(), 7);
  EXPECT_EQ(Luminance(face), (std::vector<int>{1, 2, 3, 4, 5, 255}));
  ExpectGreyOf(face);
}

TEST(MoxFace, TakesNoRecordThatIsEmptyOrNotWhole) {
  CMoxFace face;
  const auto create = [&](const std::vector<BYTE>& record) {
    face.Create(&kCamera, kRecord.data(), CTime(1));
    const std::vector<BYTE> exact(record);
    return face.Create(nullptr, exact.data(), exact.data() + exact.size(), CTime(2));
  };
  EXPECT_EQ(face.Create(&kCamera, nullptr, CTime(1)), 0);
  EXPECT_EQ(create(kRecord), 1);
  std::vector<BYTE> no_rows = kRecord;
  no_rows[6] = 0;
  EXPECT_EQ(create(no_rows), 0);
  EXPECT_EQ(face.GetFace(), nullptr);
  EXPECT_EQ(face.GetYBuf(), nullptr);
  EXPECT_EQ(face.GetCameraID().m_board, 3) << "null camera leaves the one before";
  EXPECT_EQ(face.GetTime(), CTime(2));
  for (const std::size_t bytes : {std::size_t{0}, std::size_t{15}, kRecord.size() - 1}) {
    EXPECT_EQ(create({kRecord.begin(), kRecord.begin() + static_cast<std::ptrdiff_t>(bytes)}), 0);
    EXPECT_EQ(face.GetFace(), nullptr);
  }
}

// A picture of 8 * 3 pixels in rows of 16 bytes, counting up from 0.
class CutOut : public testing::Test {
 protected:
  CutOut() : m_picture(16 * 3 - 8) { std::iota(m_picture.begin(), m_picture.end(), BYTE{0}); }
  int Cut(const CRect& rect, const CPoint* point = nullptr) {
    return m_face.Create(&kCamera, m_picture.data(), {8, 3}, rect, CTime(5), point);
  }

  std::vector<BYTE> m_picture;
  CMoxFace m_face;
};

TEST_F(CutOut, IsStoredBottomUpFromRowsTwiceAsFarApart) {
  const CPoint point = {4, 1};
  ASSERT_EQ(Cut({2, 1, 6, 3}, &point), 1);
  EXPECT_EQ(m_face.GetSize(), (CSize{4, 2}));
  EXPECT_EQ(Luminance(m_face), (std::vector<int>{34, 35, 36, 37, 18, 19, 20, 21}));
  ExpectGreyOf(m_face);
  EXPECT_EQ(m_face.GetFacePoint(), point);
  ASSERT_EQ(Cut({0, 0, 8, 3}), 1);
  EXPECT_EQ(m_face.GetFacePoint(), point) << "null point leaves the one before";
}

TEST_F(CutOut, HasAWidthOfWholeWords) {
  ASSERT_EQ(Cut({1, 0, 8, 1}), 1);
  EXPECT_EQ(m_face.GetSize(), (CSize{4, 1}));
  EXPECT_EQ(Cut({0, 0, 3, 3}), 0);
  EXPECT_EQ(m_face.GetFace(), nullptr);
}

TEST_F(CutOut, StaysInsideThePicture) {
  constexpr LONG kMax = std::numeric_limits<LONG>::max();
  constexpr LONG kMin = std::numeric_limits<LONG>::min();
  for (const CRect& rect :
       {CRect{-1, 0, 4, 2}, CRect{0, -1, 4, 2}, CRect{5, 0, 9, 2}, CRect{0, 0, 4, 4},
        CRect{kMin, kMin, kMax, kMax}, CRect{4, 2, 0, 0}, CRect{0, 2, 4, 2}}) {
    EXPECT_EQ(Cut(rect), 0);
    EXPECT_EQ(m_face.GetFace(), nullptr);
  }
  EXPECT_EQ(Cut({5, 0, 8, 2}), 0) << "nothing left of three columns";
}

TEST(MoxFaceShow, DrawsTheFaceIntoAWindow) {
  const HWND window = os::CreateWindow(nullptr, "face", {0, 0, 4, 4},
                                       [](HWND, UINT, WPARAM, LPARAM) { return LRESULT{0}; });
  CMoxFace face;
  EXPECT_EQ(face.Show(window, {0, 0, 3, 2}), 0) << "no picture";
  face.Create(nullptr, kRecord.data(), CTime());
  EXPECT_EQ(face.Show(nullptr, {0, 0, 3, 2}), 0);
  ASSERT_EQ(face.Show(window, {1, 2, 4, 4}), 1);
  const HDC dc = os::GetDC(window);
  EXPECT_EQ(os::GetPixel(dc, 1, 2), 0x040404U) << "the last row on top";
  EXPECT_EQ(os::GetPixel(dc, 3, 2), 0xFFFFFFU);
  EXPECT_EQ(os::GetPixel(dc, 3, 3), 0x030303U);
  EXPECT_EQ(os::GetPixel(dc, 0, 2), 0U);
  os::ReleaseDC(window, dc);
  os::DestroyWindow(window);
  EXPECT_EQ(face.Show(window, {0, 0, 3, 2}), 0);
}

}  // namespace
