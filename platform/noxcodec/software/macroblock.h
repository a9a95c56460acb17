// What the bit stream says of one macroblock: 16x16 luma pixels in four blocks (left to right, top
// to bottom), then one 8x8 block of Cb and one of Cr.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/framework/types.h"
#include "platform/noxcodec/software/video_format.h"

namespace zebx::noxcodec {

// In half luma pixels.
struct MotionVector {
  int x = 0;
  int y = 0;
  bool operator==(const MotionVector&) const = default;
};

enum class MacroblockKind : BYTE { kSkipped, kInter, kIntra };

// How an intra block is predicted from the pixels above and to the left of it.
enum class IntraMode : BYTE { kMean, kDown, kAcross, kGradient };

inline constexpr int kLumaBlocks = 4;
inline constexpr int kBlocks = 6;

using Coefficients = std::array<std::int16_t, kBlockPixels>;  // row by row

// The part of a macroblock that its neighbours are coded with and that deblocking needs.
struct MacroblockInfo {
  MacroblockKind kind = MacroblockKind::kSkipped;
  MotionVector motion;
  BYTE coded_blocks = 0;  // bit b: block b has levels other than 0
  std::array<IntraMode, kLumaBlocks> luma_modes{};
  IntraMode chroma_mode = IntraMode::kMean;

  bool IsCoded(int block) const { return ((coded_blocks >> block) & 1) != 0; }
  void MarkCoded(int block) { coded_blocks = static_cast<BYTE>(coded_blocks | (1 << block)); }
  IntraMode IntraModeOf(int block) const {
    return block < kLumaBlocks ? luma_modes[static_cast<std::size_t>(block)] : chroma_mode;
  }
};

struct Macroblock : MacroblockInfo {
  std::array<Coefficients, kBlocks> levels{};
};

// The macroblocks of a picture, framed by a skipped one on the left, above and on the right so that
// each has its neighbours.
class MacroblockMap {
 public:
  MacroblockMap(int columns, int rows)
      : m_stride(columns + 2), m_infos(static_cast<std::size_t>(m_stride * (rows + 1))) {}

  MacroblockInfo& At(int column, int row) { return m_infos[Index(column, row)]; }
  const MacroblockInfo& At(int column, int row) const { return m_infos[Index(column, row)]; }

 private:
  std::size_t Index(int column, int row) const {
    return static_cast<std::size_t>((row + 1) * m_stride + column + 1);
  }

  int m_stride;
  std::vector<MacroblockInfo> m_infos;
};

}  // namespace zebx::noxcodec
