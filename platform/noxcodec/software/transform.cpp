#include "platform/noxcodec/software/transform.h"

#include <algorithm>

namespace zebx::noxcodec {
namespace {

// Cosines scaled so that a transform in both directions gains 1 << kGainBits.
constexpr int kC1 = 89, kC2 = 83, kC3 = 75, kC4 = 64, kC5 = 50, kC6 = 36, kC7 = 18;
constexpr int kGainBits = 15;

// Bits dropped after the first direction; what is kept beyond the gain of half the transform is
// precision for the second one, as much as 16 bits hold.
constexpr int kForwardShift = 6;
constexpr int kInverseShift = 6;

template <int kShift>
std::int16_t Rounded(int value) {
  return static_cast<std::int16_t>((value + (1 << (kShift - 1))) >> kShift);
}

void Transpose(Coefficients& block) {
  for (std::size_t row = 0; row < kBlockSize; ++row) {
    for (std::size_t column = row + 1; column < kBlockSize; ++column) {
      std::swap(block[row * kBlockSize + column], block[column * kBlockSize + row]);
    }
  }
}

// Transforms every column. The loop runs over columns so that it becomes vector code.
template <int kShift>
void ForwardColumns(const Coefficients& in, Coefficients& out) {
  const std::int16_t* const x = in.data();
  std::int16_t* const y = out.data();
  for (int c = 0; c < kBlockSize; ++c) {
    const int s07 = x[c] + x[c + 56], d07 = x[c] - x[c + 56];
    const int s16 = x[c + 8] + x[c + 48], d16 = x[c + 8] - x[c + 48];
    const int s25 = x[c + 16] + x[c + 40], d25 = x[c + 16] - x[c + 40];
    const int s34 = x[c + 24] + x[c + 32], d34 = x[c + 24] - x[c + 32];
    y[c] = Rounded<kShift>(kC4 * (s07 + s16 + s25 + s34));
    y[c + 8] = Rounded<kShift>(kC1 * d07 + kC3 * d16 + kC5 * d25 + kC7 * d34);
    y[c + 16] = Rounded<kShift>(kC2 * (s07 - s34) + kC6 * (s16 - s25));
    y[c + 24] = Rounded<kShift>(kC3 * d07 - kC7 * d16 - kC1 * d25 - kC5 * d34);
    y[c + 32] = Rounded<kShift>(kC4 * (s07 - s16 - s25 + s34));
    y[c + 40] = Rounded<kShift>(kC5 * d07 - kC1 * d16 + kC7 * d25 + kC3 * d34);
    y[c + 48] = Rounded<kShift>(kC6 * (s07 - s34) - kC2 * (s16 - s25));
    y[c + 56] = Rounded<kShift>(kC7 * d07 - kC5 * d16 + kC3 * d25 - kC1 * d34);
  }
}

template <int kShift>
void InverseColumns(const Coefficients& in, Coefficients& out) {
  const std::int16_t* const x = in.data();
  std::int16_t* const y = out.data();
  for (int c = 0; c < kBlockSize; ++c) {
    const int x0 = x[c], x1 = x[c + 8], x2 = x[c + 16], x3 = x[c + 24];
    const int x4 = x[c + 32], x5 = x[c + 40], x6 = x[c + 48], x7 = x[c + 56];
    const int sum = kC4 * (x0 + x4), difference = kC4 * (x0 - x4);
    const int low = kC2 * x2 + kC6 * x6, high = kC6 * x2 - kC2 * x6;
    const int even0 = sum + low, even3 = sum - low;
    const int even1 = difference + high, even2 = difference - high;
    const int odd0 = kC1 * x1 + kC3 * x3 + kC5 * x5 + kC7 * x7;
    const int odd1 = kC3 * x1 - kC7 * x3 - kC1 * x5 - kC5 * x7;
    const int odd2 = kC5 * x1 - kC1 * x3 + kC7 * x5 + kC3 * x7;
    const int odd3 = kC7 * x1 - kC5 * x3 + kC3 * x5 - kC1 * x7;
    y[c] = Rounded<kShift>(even0 + odd0);
    y[c + 8] = Rounded<kShift>(even1 + odd1);
    y[c + 16] = Rounded<kShift>(even2 + odd2);
    y[c + 24] = Rounded<kShift>(even3 + odd3);
    y[c + 32] = Rounded<kShift>(even3 - odd3);
    y[c + 40] = Rounded<kShift>(even2 - odd2);
    y[c + 48] = Rounded<kShift>(even1 - odd1);
    y[c + 56] = Rounded<kShift>(even0 - odd0);
  }
}

}  // namespace

void ForwardTransform(const Coefficients& residuals, Coefficients& coefficients) {
  Coefficients half;
  ForwardColumns<kForwardShift>(residuals, half);
  Transpose(half);
  ForwardColumns<kGainBits - kForwardShift>(half, coefficients);
  Transpose(coefficients);
}

void InverseTransform(const Coefficients& coefficients, Coefficients& residuals) {
  Coefficients half;
  InverseColumns<kInverseShift>(coefficients, half);
  Transpose(half);
  InverseColumns<kGainBits - kInverseShift>(half, residuals);
  Transpose(residuals);
}

void Dequantise(const Coefficients& levels, int quantiser, Coefficients& coefficients) {
  const int step = QuantiserStep(quantiser);
  for (std::size_t i = 0; i < levels.size(); ++i) {
    coefficients[i] =
        static_cast<std::int16_t>(std::clamp(levels[i] * step, -kMaxCoefficient, kMaxCoefficient));
  }
}

void AddResidual(const Coefficients& levels, int quantiser, BYTE* pixels, int stride) {
  Coefficients coefficients, residuals;
  Dequantise(levels, quantiser, coefficients);
  InverseTransform(coefficients, residuals);
  for (int y = 0; y < kBlockSize; ++y) {
    BYTE* const row = pixels + static_cast<std::ptrdiff_t>(y) * stride;
    const std::int16_t* const residual = residuals.data() + y * kBlockSize;
    for (int x = 0; x < kBlockSize; ++x) {
      row[x] = static_cast<BYTE>(std::clamp(row[x] + residual[x], 0, 255));
    }
  }
}

}  // namespace zebx::noxcodec
