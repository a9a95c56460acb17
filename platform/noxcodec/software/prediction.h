// Prediction of pixels: from the picture before (inter) and from the pixels already decoded
// (intra).
#pragma once

#include "platform/noxcodec/software/macroblock.h"
#include "platform/noxcodec/software/picture.h"

namespace zebx::noxcodec {

// The pixels of one macroblock outside any picture.
class MacroblockPixels {
 public:
  MutablePlaneView Plane(int plane);
  PlaneView Plane(int plane) const;

 private:
  static constexpr std::size_t kLumaPixels = kMacroblockSize * kMacroblockSize;
  alignas(16) std::array<BYTE, kLumaPixels + 2 * kBlockPixels> m_bytes;
};

// Whether a macroblock's vector keeps within kMaxOvershoot of a picture of `columns` * `rows`
// macroblocks.
bool IsAllowedMotion(MotionVector motion, int column, int row, int columns, int rows);

// Copies `size` * `size` pixels (8 or 16) of a plane to `target`; (x2, y2) is their place in half
// pixels. Halves are means of their neighbours, rounded up.
void InterpolateBlock(const PlaneView& reference, int x2, int y2, int size, BYTE* target,
                      int target_stride);

// Predicts all planes of a macroblock from a reference picture with an extended border.
void PredictInter(const Picture& reference, int column, int row, MotionVector motion,
                  MacroblockPixels& target);

// Predicts the 8x8 pixels at (x, y), multiples of 8, from those above and to the left of them in
// the same plane.
void PredictIntra(const MutablePlaneView& plane, int x, int y, IntraMode mode);

}  // namespace zebx::noxcodec
