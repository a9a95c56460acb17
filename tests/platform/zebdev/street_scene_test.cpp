#include "platform/zebdev/software/street_scene.h"

#include <gtest/gtest.h>

#include "tests/platform/noxcodec/picture_measures.h"

namespace zebx::zebdev {
namespace {

using noxcodec::kLuma;
using noxcodec::Picture;

TEST(StreetScene, SameFrameOfTheSameSizeIsTheSamePicture) {
  const StreetScene scene(176, 144), twin(176, 144);
  Picture first, second(16, 16);
  scene.Render(1234567, first);
  twin.Render(7, second);
  twin.Render(1234567, second);
  for (int plane = 0; plane < noxcodec::kPlaneCount; ++plane) {
    EXPECT_EQ(Psnr(first.Plane(plane), second.Plane(plane)), 99);
  }
}

// Figures move in some places while most of the street shows nothing but noise.
TEST(StreetScene, FiguresMoveBeforeAStillStreet) {
  constexpr int kColumns = 11, kRows = 9;
  const StreetScene scene(16 * kColumns, 16 * kRows);
  Picture before, after;
  scene.Render(100, before);
  scene.Render(112, after);
  int moving = 0, still = 0;
  for (int tile = 0; tile < kColumns * kRows; ++tile) {
    const auto part = [&](const Picture& picture) {
      const auto plane = picture.Plane(kLuma);
      const BYTE* const corner = plane.Row(tile / kColumns * 16) + tile % kColumns * 16;
      return noxcodec::PlaneView{corner, 16, 16, plane.stride};
    };
    const double psnr = Psnr(part(before), part(after));
    moving += psnr < 25;
    still += psnr > 38;
  }
  EXPECT_GE(moving, 5);
  EXPECT_GE(still, kColumns * kRows / 2);
}

}  // namespace
}  // namespace zebx::zebdev
