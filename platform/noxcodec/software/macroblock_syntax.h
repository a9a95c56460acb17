// The syntax of a macroblock, written once for the three coders of range_coder.h: with the encoder
// the decisions come from the macroblock, with the decoder the macroblock is filled from them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>

#include "platform/noxcodec/software/macroblock.h"
#include "platform/noxcodec/software/range_coder.h"

namespace zebx::noxcodec {

enum class BlockClass : BYTE { kIntraLuma, kInterLuma, kChroma };
inline constexpr int kBlockClasses = 3;

// Positions of a block from the lowest to the highest frequency.
inline constexpr std::array<BYTE, kBlockPixels> kZigzag = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
    41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
    30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

// Neighbouring frequencies share probabilities.
inline constexpr int kBands = 12;
inline constexpr std::array<BYTE, kBlockPixels> kBandOf = {
    0,  1,  2,  3,  4,  5,  6,  6,  6,  7,  7,  7,  7,  8,  8,  8,  8,  8,  8,  9,  9,  9,
    9,  9,  9,  9,  9,  9,  10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 11,
    11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 11};

// A level is coded knowing whether the one before it was 0, 1 or more.
inline constexpr int kHistories = 3;
inline int HistoryAfter(int level) {
  return std::min(std::abs(level), kHistories - 1);
}

inline constexpr int kUnaryLevels = 14;
inline constexpr int kMaxLevel = 2047;

struct BlockModel {
  std::array<std::array<Probability, kHistories>, kBands> ends;
  std::array<std::array<Probability, kHistories>, kBands> nonzeros;
  std::array<std::array<Probability, kHistories>, kBands> large;
  std::array<std::array<Probability, kUnaryLevels>, 2> larger;
};

// Magnitudes without a bound known beforehand: the length of the number in unary, then its bits.
struct NumberModel {
  std::array<Probability, 16> length;
};

struct MotionModel {
  Probability nonzero;
  NumberModel magnitude;
};

using IntraModeModel = std::array<Probability, 3>;

// All that is learnt from one I-frame to the next.
struct SyntaxModel {
  std::array<Probability, 3> skipped;
  std::array<Probability, 3> intra;
  std::array<MotionModel, 2> motion;
  std::array<std::array<Probability, 3>, 2> luma_coded;
  std::array<std::array<Probability, 3>, 2> chroma_coded;
  IntraModeModel luma_mode;
  IntraModeModel chroma_mode;
  std::array<BlockModel, kBlockClasses> blocks;
  NumberModel escape;
};

// Codes `value` >= 0 below 1 << 15.
template <class Coder, class Model>
int CodeNumber(Coder& coder, Model& model, int value) {
  constexpr int kMaxLength = 15;
  int length = 0;
  while (length < kMaxLength && coder.Bit(model.length[static_cast<std::size_t>(length)],
                                          (value + 1) >> (length + 1) != 0)) {
    ++length;
  }
  int coded = 1;
  for (int bit = length - 1; bit >= 0; --bit) {
    coded = (coded << 1) | static_cast<int>(coder.EvenBit((((value + 1) >> bit) & 1) != 0));
  }
  return coded - 1;
}

// Codes a level other than 0 up to its sign, given what came before it.
template <class Coder, class Model, class Escape>
int CodeMagnitude(Coder& coder, Model& model, Escape& escape, std::size_t band, std::size_t history,
                  int magnitude) {
  if (!coder.Bit(model.large[band][history], magnitude > 1)) return 1;
  auto& larger = model.larger[history == 2 ? 1 : 0];
  for (int step = 0; step < kUnaryLevels; ++step) {
    if (!coder.Bit(larger[static_cast<std::size_t>(step)], magnitude > step + 2)) return step + 2;
  }
  return std::min(kUnaryLevels + 2 + CodeNumber(coder, escape, magnitude - kUnaryLevels - 2),
                  kMaxLevel);
}

// Codes a block that has at least one level other than 0. Decoding expects zeros in `levels`.
template <class Coder, class Model, class Escape>
void CodeBlock(Coder& coder, Model& model, Escape& escape, Coefficients& levels) {
  int last = 0;
  for (int scan = 0; scan < kBlockPixels; ++scan) {
    if (levels[kZigzag[static_cast<std::size_t>(scan)]] != 0) last = scan;
  }
  std::size_t history = 0;
  bool ended = false;
  for (int scan = 0; scan < kBlockPixels && !ended; ++scan) {
    std::int16_t& level = levels[kZigzag[static_cast<std::size_t>(scan)]];
    const std::size_t band = kBandOf[static_cast<std::size_t>(scan)];
    if (!coder.Bit(model.nonzeros[band][history], level != 0)) {
      history = 0;
      continue;
    }
    const int magnitude = CodeMagnitude(coder, model, escape, band, history, std::abs(int{level}));
    const bool negative = coder.EvenBit(level < 0);
    level = static_cast<std::int16_t>(negative ? -magnitude : magnitude);
    history = static_cast<std::size_t>(HistoryAfter(magnitude));
    ended = scan + 1 < kBlockPixels && coder.Bit(model.ends[band][history], scan == last);
  }
}

template <class Coder, class Model>
int CodeMotionDifference(Coder& coder, Model& model, int difference) {
  if (!coder.Bit(model.nonzero, difference != 0)) return 0;
  const bool negative = coder.EvenBit(difference < 0);
  const int magnitude = 1 + CodeNumber(coder, model.magnitude, std::abs(difference) - 1);
  return negative ? -magnitude : magnitude;
}

// The middle one of the neighbours' vectors, component by component.
inline MotionVector PredictMotion(const MacroblockMap& map, int column, int row) {
  const MotionVector left = map.At(column - 1, row).motion;
  const MotionVector above = map.At(column, row - 1).motion;
  const MotionVector above_right = map.At(column + 1, row - 1).motion;
  const auto middle = [](int a, int b, int c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
  };
  return {middle(left.x, above.x, above_right.x), middle(left.y, above.y, above_right.y)};
}

// The two macroblocks that a macroblock's decisions are likened to.
struct Neighbours {
  const MacroblockInfo& left;
  const MacroblockInfo& above;
};

// How many of the blocks to the left of and above luma block `block` are coded.
inline std::size_t CodedLumaNeighbours(const MacroblockInfo& self, const Neighbours& neighbours,
                                       int block) {
  const bool left = block % 2 != 0 ? self.IsCoded(block - 1) : neighbours.left.IsCoded(block + 1);
  const bool above = block / 2 != 0 ? self.IsCoded(block - 2) : neighbours.above.IsCoded(block + 2);
  return static_cast<std::size_t>(left) + static_cast<std::size_t>(above);
}

template <class Coder, class Model>
IntraMode CodeIntraMode(Coder& coder, Model& model, IntraMode mode) {
  if (!coder.Bit(model[0], mode != IntraMode::kMean)) return IntraMode::kMean;
  if (!coder.Bit(model[1], mode != IntraMode::kDown)) return IntraMode::kDown;
  return coder.Bit(model[2], mode != IntraMode::kAcross) ? IntraMode::kGradient
                                                         : IntraMode::kAcross;
}

// The probability that block `block` is coded, given the blocks before it.
template <class Model>
auto& CodedProbability(Model& model, const Neighbours& neighbours, const MacroblockInfo& self,
                       int block) {
  const std::size_t intra = self.kind == MacroblockKind::kIntra ? 1 : 0;
  if (block < kLumaBlocks) {
    return model.luma_coded[intra][CodedLumaNeighbours(self, neighbours, block)];
  }
  return model.chroma_coded[intra][static_cast<std::size_t>(neighbours.left.IsCoded(block)) +
                                   static_cast<std::size_t>(neighbours.above.IsCoded(block))];
}

template <class Coder, class Model>
void CodeCodedBlocks(Coder& coder, Model& model, const Neighbours& neighbours,
                     MacroblockInfo& self) {
  MacroblockInfo wanted = self;
  self.coded_blocks = 0;
  for (int block = 0; block < kBlocks; ++block) {
    auto& probability = CodedProbability(model, neighbours, self, block);
    if (coder.Bit(probability, wanted.IsCoded(block))) self.MarkCoded(block);
  }
}

inline BlockClass ClassOf(MacroblockKind kind, int block) {
  if (block >= kLumaBlocks) return BlockClass::kChroma;
  return kind == MacroblockKind::kIntra ? BlockClass::kIntraLuma : BlockClass::kInterLuma;
}

template <class Coder, class Model>
void CodeKind(Coder& coder, Model& model, FrameKind frame, const Neighbours& neighbours,
              MacroblockInfo& self) {
  if (frame == FrameKind::kIntra) {
    self.kind = MacroblockKind::kIntra;
    return;
  }
  const std::size_t skipped_around =
      static_cast<std::size_t>(neighbours.left.kind == MacroblockKind::kSkipped) +
      static_cast<std::size_t>(neighbours.above.kind == MacroblockKind::kSkipped);
  if (coder.Bit(model.skipped[skipped_around], self.kind == MacroblockKind::kSkipped)) {
    self.kind = MacroblockKind::kSkipped;
    return;
  }
  const bool intra = coder.Bit(model.intra[skipped_around], self.kind == MacroblockKind::kIntra);
  self.kind = intra ? MacroblockKind::kIntra : MacroblockKind::kInter;
}

// Codes a vector as its difference from `predicted`, which is PredictMotion's.
template <class Coder, class Model>
void CodeMotion(Coder& coder, Model& model, MotionVector predicted, MotionVector& motion) {
  motion.x = predicted.x + CodeMotionDifference(coder, model[0], motion.x - predicted.x);
  motion.y = predicted.y + CodeMotionDifference(coder, model[1], motion.y - predicted.y);
}

// Codes one macroblock. Decoding expects it as constructed.
template <class Coder, class Model>
void CodeMacroblock(Coder& coder, Model& model, FrameKind frame, const Neighbours& neighbours,
                    MotionVector predicted_motion, Macroblock& self) {
  CodeKind(coder, model, frame, neighbours, self);
  if (self.kind == MacroblockKind::kSkipped) return;
  if (self.kind == MacroblockKind::kInter) {
    CodeMotion(coder, model.motion, predicted_motion, self.motion);
  } else {
    for (IntraMode& mode : self.luma_modes) mode = CodeIntraMode(coder, model.luma_mode, mode);
    self.chroma_mode = CodeIntraMode(coder, model.chroma_mode, self.chroma_mode);
  }
  CodeCodedBlocks(coder, model, neighbours, self);
  for (int block = 0; block < kBlocks; ++block) {
    if (!self.IsCoded(block)) continue;
    CodeBlock(coder, model.blocks[static_cast<std::size_t>(ClassOf(self.kind, block))],
              model.escape, self.levels[static_cast<std::size_t>(block)]);
  }
}

}  // namespace zebx::noxcodec
