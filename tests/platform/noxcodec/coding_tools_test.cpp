// The parts that encoder and decoder are made of.
#include <gtest/gtest.h>

#include <vector>

#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/picture_scaler.h"
#include "platform/noxcodec/software/transform.h"
#include "tests/platform/noxcodec/picture_measures.h"

namespace zebx::noxcodec {
namespace {

// The inverse is part of the format: it must give the same residuals on every machine, also for
// coefficients that no encoder makes.
TEST(Transform, InverseKeepsItsResiduals) {
  DWORD dice = 1;
  std::vector<BYTE> bytes;
  for (int round = 0; round < 50; ++round) {
    Coefficients coefficients, residuals;
    for (auto& coefficient : coefficients) {
      dice = dice * 1664525 + 1013904223;
      const int value = static_cast<int>(dice >> 20);
      const int extreme = value > 2048 ? kMaxCoefficient : -kMaxCoefficient;
      coefficient = static_cast<std::int16_t>(round % 2 == 0 ? value - 2048 : extreme);
    }
    InverseTransform(coefficients, residuals);
    for (const int residual : residuals) {
      bytes.push_back(static_cast<BYTE>(residual));
      bytes.push_back(static_cast<BYTE>(residual >> 8));
    }
  }
  EXPECT_EQ(Crc32(bytes), 0xAA20CEE6U);
}

TEST(PictureScaler, ShrinksByTheMeanAndEnlargesFromPixelToPixel) {
  PictureScaler scaler;
  Picture smaller(3, 2), larger(8, 3);
  scaler.Scale(DrawPicture(6, 4, [](int, int x, int y) { return 41 * x + 10 * y; }).View(),
               smaller);
  EXPECT_EQ(smaller.Plane(kLuma).Row(0)[0], 26);
  EXPECT_EQ(smaller.Plane(kLuma).Row(1)[2], 210);

  scaler.Scale(DrawPicture(2, 1, [](int, int x, int) { return 200 * x; }).View(), larger);
  const BYTE* const row = larger.Plane(kLuma).Row(2);
  EXPECT_EQ(std::vector<int>(row, row + 8), (std::vector<int>{0, 0, 25, 75, 125, 175, 200, 200}));
}

}  // namespace
}  // namespace zebx::noxcodec
