// The parts that encoder and decoder are made of.
#include <gtest/gtest.h>

#include <vector>

#include "platform/noxcodec/software/picture_scaler.h"
#include "platform/noxcodec/software/transform.h"
#include "tests/platform/noxcodec/picture_measures.h"

namespace noxcodec {
namespace {

// The inverse is part of the format: it must give the same residuals on every machine, also for
// coefficients that no encoder makes.
TEST(Transform, InverseIsExactlyTheDocumentedOne) {
  constexpr int kRows[8][8] = {
      {64, 64, 64, 64, 64, 64, 64, 64},     {89, 75, 50, 18, -18, -50, -75, -89},
      {83, 36, -36, -83, -83, -36, 36, 83}, {75, -18, -89, -50, 50, 89, 18, -75},
      {64, -64, -64, 64, 64, -64, -64, 64}, {50, -89, 18, 75, -75, -18, 89, -50},
      {36, -83, 83, -36, -36, 83, -83, 36}, {18, -50, 75, -89, 89, -75, 50, -18}};
  DWORD dice = 1;
  for (int round = 0; round < 50; ++round) {
    Coefficients coefficients, residuals;
    for (auto& coefficient : coefficients) {
      dice = dice * 1664525 + 1013904223;
      const int value = static_cast<int>(dice >> 20);
      coefficient = static_cast<std::int16_t>(round % 2 == 0 ? value - 2048
                                              : value > 2048 ? kMaxCoefficient
                                                             : -kMaxCoefficient);
    }
    InverseTransform(coefficients, residuals);
    const auto sum = [&](int k, const auto& factor) {
      int products = 0;
      for (int i = 0; i < 8; ++i) products += kRows[i][k] * factor(i);
      return products;
    };
    for (int y = 0; y < 8; ++y) {
      const auto half = [&](int x) {
        return (32 +
                sum(y,
                    [&](int i) { return coefficients.at(static_cast<std::size_t>(i * 8 + x)); })) >>
               6;
      };
      for (int x = 0; x < 8; ++x) {
        ASSERT_EQ(residuals.at(static_cast<std::size_t>(y * 8 + x)), (256 + sum(x, half)) >> 9);
      }
    }
  }
}

TEST(ScalePicture, ShrinksByTheMeanAndEnlargesFromPixelToPixel) {
  const Picture source = DrawPicture(6, 4, [](int, int x, int y) { return 40 * x + 10 * y; });
  Picture smaller(3, 2), larger(8, 3);
  ScalePicture(source.View(), smaller);
  EXPECT_EQ(smaller.Plane(kLuma).Row(0)[0], 25);
  EXPECT_EQ(smaller.Plane(kLuma).Row(1)[2], 205);

  ScalePicture(DrawPicture(2, 1, [](int, int x, int) { return 200 * x; }).View(), larger);
  const BYTE* const row = larger.Plane(kLuma).Row(2);
  EXPECT_EQ(std::vector<int>(row, row + 8), (std::vector<int>{0, 0, 25, 75, 125, 175, 200, 200}));
}

}  // namespace
}  // namespace noxcodec
