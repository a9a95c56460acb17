// The encoder's search for where a macroblock has moved from.
#pragma once

#include <span>

#include "platform/noxcodec/software/macroblock_syntax.h"
#include "platform/noxcodec/software/prediction.h"
#include "platform/noxcodec/software/rate_distortion.h"

namespace zebx::noxcodec {

// What the search needs to know of the macroblock.
struct MotionTask {
  const Picture& reference;  // its border is extended
  PlaneView source;          // luma
  int column;
  int row;
  int columns;
  int rows;
  MotionVector predicted;
  const std::array<MotionModel, 2>& model;
  const RateDistortion& rate;
};

// The vector with the least sum of absolute luma differences and weighted bits that a descent from
// the best of `starts` finds, first in whole, then in half pixels.
MotionVector SearchMotion(const MotionTask& task, std::span<const MotionVector> starts);

}  // namespace zebx::noxcodec
