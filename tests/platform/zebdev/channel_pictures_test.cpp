// Motion, colours, pixels and faces of the pictures that channels see.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "platform/zebdev/software/face_packet.h"
#include "platform/zebdev/software/motion_detector.h"
#include "platform/zebdev/software/picture_colour.h"
#include "platform/zebdev/software/picture_pixels.h"
#include "record/mox_face.h"
#include "tests/platform/noxcodec/picture_measures.h"

namespace zebx::zebdev {
namespace {

using noxcodec::Picture;

Picture Grey(int width, int height, int level, int cb = 128, int cr = 128) {
  const std::array<int, noxcodec::kPlaneCount> values = {level, cb, cr};
  return DrawPicture(width, height, [&](int plane, int, int) {
    return values.at(static_cast<std::size_t>(plane));
  });
}

TEST(MotionDetector, SensitivitySaysHowLargeAChangeHasToBe) {
  const tag_MASKAREA area[] = {{0, 0, 3, 2}};
  // The change of a cell's mean, and the least sensitivity that finds it.
  for (const auto& [change, least] : {std::pair(1, 16), {2, 12}, {4, 8}, {15, 1}, {16, 0}}) {
    for (DWORD sensitivity = 0; sensitivity <= 18; ++sensitivity) {
      MotionDetector detector;
      detector.SetSensitivity(sensitivity);
      detector.Look(Grey(48, 32, 100).View(), area);
      const DWORD moved = detector.Look(Grey(48, 32, 100 - change).View(), area);
      EXPECT_EQ(moved, sensitivity >= static_cast<DWORD>(least) ? 1U : 0U)
          << change << " at " << sensitivity;
    }
  }
}

TEST(MotionDetector, LooksInsideTheAreasAndThePictureOnly) {
  constexpr DWORD kFar = 0xFFFFFFFF;
  // The cell that changes is the lower right one of the macroblock in column 1 of row 1. The last
  // half macroblocks of the picture are none.
  const std::vector<std::pair<tag_MASKAREA, bool>> cases = {
      {{1, 1, 2, 2}, true},        {{0, 0, 2, 2}, true},        {{0, 0, kFar, kFar}, true},
      {{0, 0, 1, 2}, false},       {{2, 0, 3, 3}, false},       {{0, 2, 3, 3}, false},
      {{1, 1, 1, 2}, false},       {{2, 2, 1, 1}, false},       {{kFar, 0, kFar, kFar}, false},
      {{0, kFar, 3, kFar}, false}, {{5, 5, kFar, kFar}, false}, {{3, 0, 4, 3}, false}};
  std::vector<tag_MASKAREA> areas;
  DWORD expected = 0;
  for (const auto& [area, moves] : cases) {
    expected |= DWORD{moves} << areas.size();
    areas.push_back(area);
  }
  const auto picture = [](int brightness) {
    return DrawPicture(56, 56, [&](int plane, int x, int y) {
      const bool is_cell = x >= 24 && x < 32 && y >= 24 && y < 32;
      const bool is_edge = x >= 48 || y >= 48;
      return plane == 0 && (is_cell || is_edge) ? brightness : 60;
    });
  };
  MotionDetector detector;
  EXPECT_EQ(detector.Look(picture(60).View(), areas), 0U);
  EXPECT_EQ(detector.Look(picture(90).View(), areas), expected);
  EXPECT_EQ(detector.Look(picture(90).View(), areas), 0U);
  EXPECT_EQ(detector.Look(picture(60).View(), std::vector(40, cases[0].first)), kFar);
  EXPECT_EQ(detector.Look(picture(90).View(), {}), 0U);

  // Nothing to compare with: after Forget, and at another size.
  detector.Forget();
  EXPECT_EQ(detector.Look(picture(60).View(), areas), 0U);
  EXPECT_EQ(detector.Look(Grey(32, 32, 200).View(), areas), 0U);
  EXPECT_EQ(detector.Look(Grey(32, 32, 100).View(), areas), 0x7U | 1U << 3);
}

TEST(PictureColour, EachComponentDoesItsPart) {
  constexpr LONG kMany = 0x7FFFFFFF;
  const tag_DEVCOLOR neutral = {128, 64, 50, 0};  // hue comes last in the record
  const std::array<int, 3> dark = {62, 108, 178}, bright = {190, 140, 128};
  const struct {
    LONG brightness, contrast, hue, saturation;
    std::array<int, 3> dark, bright;  // what becomes of two pictures' pixels
  } settings[] = {{128, 64, 0, 50, dark, bright},
                  {138, 64, 0, 50, {72, 108, 178}, {200, 140, 128}},
                  {kMany, 64, 0, 50, {189, 108, 178}, {255, 140, 128}},
                  {128, 32, 0, 50, {94, 108, 178}, {158, 140, 128}},
                  {128, kMany, 0, 50, {0, 108, 178}, {253, 140, 128}},
                  {128, 64, 0, 0, {62, 128, 128}, {190, 128, 128}},
                  {128, 64, 0, 100, {62, 88, 228}, {190, 152, 128}},
                  {128, 64, -kMany, 50, {62, 148, 78}, {190, 116, 128}},
                  {128, 64, 64, 50, {62, 178, 148}, {190, 128, 116}}};
  for (const auto& setting : settings) {
    PictureColour colour;
    colour.Set({.m_component_0 = setting.brightness,
                .m_component_1 = setting.contrast,
                .m_component_3 = setting.saturation,
                .m_component_2 = setting.hue},
               neutral);
    for (const auto& [from, to] : {std::pair(dark, setting.dark), {bright, setting.bright}}) {
      Picture picture = Grey(17, 9, from[0], from[1], from[2]);
      colour.Apply(picture);
      const Picture expected = Grey(17, 9, to[0], to[1], to[2]);
      for (int plane = 0; plane < noxcodec::kPlaneCount; ++plane) {
        EXPECT_EQ(Psnr(picture.Plane(plane), expected.Plane(plane)), 99)
            << plane << " at setting " << &setting - settings;
      }
    }
  }
}

TEST(PicturePixels, StillPicturesHaveTheSizeAndRowOrderThatIsAskedFor) {
  // The lower a row, the brighter.
  const Picture picture =
      DrawPicture(6, 4, [](int plane, int, int y) { return plane == 0 ? 40 + 10 * y : 128; });
  PicturePixels pixels;
  std::vector<BYTE> down(3 * 6 * 4), up(3 * 6 * 4);
  ASSERT_EQ(pixels.WriteBgr(picture.View(), 6, 4, 18, down), 1);
  ASSERT_EQ(pixels.WriteBgr(picture.View(), 6, 4, -18, up), 1);
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t byte = 0; byte < 18; ++byte) {
      ASSERT_NEAR(down[18 * row + byte], 28 + 11.64 * static_cast<double>(row), 1);
      ASSERT_EQ(up[18 * row + byte], down[18 * (3 - row) + byte]);
    }
  }
  // Pure blue at another size, in rows with room between them.
  std::vector<BYTE> padded(40 * 7, 9);
  ASSERT_EQ(pixels.WriteBgr(Grey(6, 4, 41, 240, 110).View(), 12, 7, -40, padded), 1);
  for (std::size_t row = 0; row < 7; ++row) {
    EXPECT_GT(padded[40 * row], 240);
    EXPECT_LT(padded[40 * row + 34], 20);
    EXPECT_LT(padded[40 * row + 35], 20);
    EXPECT_EQ(padded[40 * row + 36], 9);
  }

  constexpr LONG kLeast = -0x7FFFFFFF - 1;
  const std::vector<BYTE> before = up;
  constexpr LONG kBad[][3] = {{6, 5, 18},     {6, 4, -17},        {0, 4, 18},        {6, -1, 18},
                              {6, 4, kLeast}, {6, 4, 0x7FFFFFFF}, {20000, 1, 60000}, {1, 20000, 3}};
  for (const auto& [width, height, step] : kBad) {
    EXPECT_EQ(pixels.WriteBgr(picture.View(), width, height, step, up), 0) << width << ' ' << step;
  }
  EXPECT_EQ(up, before);
}

TEST(FacePacket, HoldsFacesAsTheRecordingSideReadsThem) {
  const Picture picture =
      DrawPicture(64, 48, [](int, int x, int y) { return static_cast<BYTE>(x + 3 * y); });
  constexpr DWORD kFar = 0xFFFFFFFF;
  const std::vector<ChannelSource::FaceArea> areas = {
      {10, 20, 11, 5}, {64, 0, 8, 8}, {61, 0, 8, 8},     {56, 40, kFar, kFar},
      {0, 0, 3, 8},    {0, 48, 8, 1}, {kFar, kFar, 8, 8}};
  const std::vector<std::array<int, 4>> found = {{10, 20, 8, 5}, {56, 40, 8, 8}};
  std::vector<BYTE> packet;
  ASSERT_EQ(WriteFacePacket(picture.View(), areas, packet), 2U);
  const auto* const head = reinterpret_cast<const tag_FACEPACKET*>(packet.data());
  EXPECT_EQ(head->m_count, 2U);
  EXPECT_EQ(head->m_kind, kFacePacket);
  const BYTE* record = packet.data() + sizeof(tag_FACEPACKET);
  for (std::size_t index = 0; index < found.size(); ++index) {
    const auto& [left, top, width, height] = found[index];
    CMoxFace face;
    ASSERT_EQ(face.Create(nullptr, record, packet.data() + packet.size(), CTime(1)), 1);
    EXPECT_EQ(face.GetFacePoint().x, left);
    EXPECT_EQ(face.GetFacePoint().y, top);
    ASSERT_EQ(face.GetSize().cx, width);
    ASSERT_EQ(face.GetSize().cy, height);
    EXPECT_EQ(face.GetDetectIndex(), static_cast<int>(index));
    for (int y = 0; y < height; ++y) {  // bottom-up
      EXPECT_EQ(face.GetYBuf()[y * width + 1], left + 1 + 3 * (top + height - 1 - y));
    }
    record += CMoxFace::kRecordHeaderBytes + static_cast<std::size_t>(width * height);
  }
  EXPECT_EQ(record, packet.data() + packet.size());
  EXPECT_EQ(WriteFacePacket(picture.View(), {}, packet), 0U);
  EXPECT_EQ(packet.size(), sizeof(tag_FACEPACKET));
}

}  // namespace
}  // namespace zebx::zebdev
