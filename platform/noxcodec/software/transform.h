// The 8x8 transform and what lies between it and the levels of the bit stream. All integers: the
// inverse is part of the format and gives the same pixels everywhere.
#pragma once

#include "platform/noxcodec/software/macroblock.h"

namespace zebx::noxcodec {

// An orthonormal 8x8 cosine transform of `residuals`, rounded to integers.
void ForwardTransform(const Coefficients& residuals, Coefficients& coefficients);

// Its inverse for coefficients within +-kMaxCoefficient.
void InverseTransform(const Coefficients& coefficients, Coefficients& residuals);

inline constexpr int kMaxCoefficient = 2047;

// The distance of neighbouring reconstruction values.
inline int QuantiserStep(int quantiser) {
  return 2 * quantiser;
}

// The coefficients that `levels` stand for.
void Dequantise(const Coefficients& levels, int quantiser, Coefficients& coefficients);

// Dequantises and transforms `levels` and adds the result to the 8x8 pixels at `pixels`.
void AddResidual(const Coefficients& levels, int quantiser, BYTE* pixels, int stride);

}  // namespace zebx::noxcodec
