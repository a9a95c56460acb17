// The parts that encoder and decoder are made of.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string_view>

#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/picture_scaler.h"
#include "platform/noxcodec/software/range_coder.h"
#include "platform/noxcodec/software/transform.h"

namespace noxcodec {
namespace {

class Dice {
 public:
  int Roll(int sides) {
    m_state = m_state * 1664525 + 1013904223;
    return static_cast<int>((m_state >> 8) % static_cast<DWORD>(sides));
  }

 private:
  DWORD m_state = 1;
};

TEST(Crc32, HasTheUsualCheckValue) {
  constexpr std::string_view kText = "123456789";
  EXPECT_EQ(Crc32(std::vector<BYTE>(kText.begin(), kText.end())), 0xCBF43926U);
}

// Decisions of all likelihoods, in streams of many lengths: carries and cut ends included.
TEST(RangeCoder, GivesBackEveryDecisionAndCountsItsCost) {
  Dice dice;
  for (int length = 0; length < 400; ++length) {
    std::vector<bool> decisions;
    for (int i = 0; i < length; ++i) decisions.push_back(dice.Roll(100) < (length % 50) * 2);
    std::vector<BYTE> bytes;
    RangeEncoder encoder(bytes);
    Probability written;
    int cost = 0;
    for (const bool decision : decisions) {
      cost += CostOf(written, decision) + kCostOfOneBit;
      encoder.Bit(written, decision);
      encoder.EvenBit(!decision);
    }
    encoder.Finish();
    EXPECT_NEAR(static_cast<double>(bytes.size()) * 8, cost / double{kCostOfOneBit},
                16 + 0.05 * length);

    RangeDecoder decoder(bytes);
    Probability read;
    for (const bool decision : decisions) {
      ASSERT_EQ(decoder.Bit(read), decision);
      ASSERT_EQ(decoder.EvenBit(), !decision);
    }
    EXPECT_FALSE(decoder.Overrun());
  }
}

TEST(RangeCoder, NoticesReadingFarBeyondTheEnd) {
  const std::vector<BYTE> bytes = {0x12, 0x34};
  RangeDecoder decoder(bytes);
  int decisions = 0;
  while (!decoder.Overrun() && decisions < 1000) {
    decoder.EvenBit();
    ++decisions;
  }
  EXPECT_LT(decisions, 80);
}

TEST(Transform, IsOrthonormalAndItsInverseGivesThePixelsBack) {
  Dice dice;
  for (int round = 0; round < 200; ++round) {
    Coefficients pixels, coefficients, back;
    const int contrast = round < 100 ? 511 : 2;
    for (auto& pixel : pixels) {
      const int value = round % 2 != 0 ? dice.Roll(2) * (contrast - 1) : dice.Roll(contrast);
      pixel = static_cast<std::int16_t>(value - contrast / 2);
    }
    ForwardTransform(pixels, coefficients);
    InverseTransform(coefficients, back);
    double energy = 0, coded_energy = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      ASSERT_LE(std::abs(pixels[i] - back[i]), 2);
      energy += pixels[i] * pixels[i];
      coded_energy += coefficients[i] * coefficients[i];
    }
    EXPECT_NEAR(coded_energy, energy, 0.01 * energy + 64);
  }
}

// The inverse is part of the format: it must give the same residuals on every machine, also for
// coefficients that no encoder makes.
TEST(Transform, InverseIsExactlyTheDocumentedOne) {
  constexpr int kRows[8][8] = {
      {64, 64, 64, 64, 64, 64, 64, 64},     {89, 75, 50, 18, -18, -50, -75, -89},
      {83, 36, -36, -83, -83, -36, 36, 83}, {75, -18, -89, -50, 50, 89, 18, -75},
      {64, -64, -64, 64, 64, -64, -64, 64}, {50, -89, 18, 75, -75, -18, 89, -50},
      {36, -83, 83, -36, -36, 83, -83, 36}, {18, -50, 75, -89, 89, -75, 50, -18}};
  Dice dice;
  for (int round = 0; round < 50; ++round) {
    Coefficients coefficients, residuals;
    for (auto& coefficient : coefficients) {
      const int value = round % 2 != 0 ? dice.Roll(2) * 2 * kMaxCoefficient : dice.Roll(4095);
      coefficient = static_cast<std::int16_t>(value - kMaxCoefficient);
    }
    InverseTransform(coefficients, residuals);
    int half[8][8];
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < 8; ++x) {
        int sum = 32;
        for (int k = 0; k < 8; ++k)
          sum += kRows[k][y] * coefficients[static_cast<std::size_t>(k * 8 + x)];
        half[y][x] = sum >> 6;
      }
    }
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < 8; ++x) {
        int sum = 256;
        for (int k = 0; k < 8; ++k) sum += kRows[k][x] * half[y][k];
        ASSERT_EQ(residuals[static_cast<std::size_t>(y * 8 + x)], sum >> 9);
      }
    }
  }
}

TEST(ScalePicture, ShrinkingTakesTheMeanOfTheCoveredArea) {
  Picture source(6, 4), target(3, 2);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 6; ++x) source.Plane(kLuma).Row(y)[x] = static_cast<BYTE>(40 * x + 10 * y);
  }
  ScalePicture(source.View(), target);
  EXPECT_EQ(target.Plane(kLuma).Row(0)[0], 25);
  EXPECT_EQ(target.Plane(kLuma).Row(1)[2], 205);
}

TEST(ScalePicture, EnlargingGoesStraightFromPixelToPixel) {
  Picture source(2, 1), target(8, 3);
  source.Plane(kLuma).Row(0)[0] = 0;
  source.Plane(kLuma).Row(0)[1] = 200;
  ScalePicture(source.View(), target);
  const BYTE* const row = target.Plane(kLuma).Row(2);
  EXPECT_EQ(std::vector<int>(row, row + 8), (std::vector<int>{0, 0, 25, 75, 125, 175, 200, 200}));
}

TEST(ScalePicture, KeepsAFlatPictureFlatInEverySize) {
  Picture source(37, 23);
  for (const auto& [width, height] : {std::pair{1, 1}, {2, 90}, {36, 24}, {38, 22}, {130, 5}}) {
    Picture target(width, height);
    ScalePicture(source.View(), target);
    for (int plane = 0; plane < kPlaneCount; ++plane) {
      const auto view = target.Plane(plane);
      for (int y = 0; y < view.height; ++y) {
        EXPECT_EQ(std::count(view.Row(y), view.Row(y) + view.width, 128), view.width);
      }
    }
  }
}

}  // namespace
}  // namespace noxcodec
