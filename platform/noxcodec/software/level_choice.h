// The encoder's choice of the levels of one block.
#pragma once

#include <cstdint>

#include "platform/noxcodec/software/macroblock_syntax.h"
#include "platform/noxcodec/software/rate_distortion.h"

namespace zebx::noxcodec {

// The probabilities that a block will be coded with, as far as they are known beforehand.
struct BlockContext {
  const BlockModel& model;
  const NumberModel& escape;
  const Probability& coded;
};

struct LevelChoice {
  bool coded;         // false: all levels are 0
  std::int64_t cost;  // RateDistortion::Of the whole block, its coded flag included
  int squared_error;  // of the block without any levels
};

// Finds the levels with the least sum of bits and squared error: a shortest path through the block,
// for each coefficient over the nearest level, the one below it and 0.
LevelChoice ChooseLevels(const Coefficients& coefficients, int quantiser,
                         const BlockContext& context, const RateDistortion& rate,
                         Coefficients& levels);

}  // namespace zebx::noxcodec
