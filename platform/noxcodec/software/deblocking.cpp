#include "platform/noxcodec/software/deblocking.h"

#include <algorithm>
#include <cstdlib>

#include "platform/noxcodec/software/reconstruction.h"

namespace zebx::noxcodec {
namespace {

// Steps up to this height are taken for coding faults; beyond twice of it, for the picture's own.
int LoopStrength(int quantiser) {
  return (3 * quantiser + 8) / 8;
}
int DisplayStrength(int quantiser) {
  return (3 * quantiser + 8) / 4;
}

// Smooths the border between `b` and `c` of four pixels in a row, a b | c d: eight such rows, the
// pixels of a row `across` bytes apart, the rows `along` bytes apart.
template <bool kAcrossRows>
void FilterBorder(BYTE* c, int stride, int strength) {
  const std::ptrdiff_t across = kAcrossRows ? stride : 1;
  const std::ptrdiff_t along = kAcrossRows ? 1 : stride;
  for (int i = 0; i < kBlockSize; ++i) {
    BYTE* const p = c + i * along;
    const int pa = p[-2 * across], pb = p[-across], pc = p[0], pd = p[across];
    const int step = (pa - 4 * pb + 4 * pc - pd) / 8;
    const int height = std::abs(step);
    const int ramp = std::max(0, height - std::max(0, 2 * (height - strength)));
    const int inner = step < 0 ? -ramp : ramp;
    const int outer = std::clamp((pa - pd) / 4, -ramp / 2, ramp / 2);
    p[-2 * across] = static_cast<BYTE>(pa - outer);
    p[-across] = static_cast<BYTE>(std::clamp(pb + inner, 0, 255));
    p[0] = static_cast<BYTE>(std::clamp(pc - inner, 0, 255));
    p[across] = static_cast<BYTE>(pd + outer);
  }
}

// Whether a border inside one macroblock or between two shows.
bool IsDisturbed(const MacroblockInfo& info, int block) {
  return info.kind == MacroblockKind::kIntra || info.IsCoded(block);
}

bool IsBorderDisturbed(const MacroblockInfo& a, int block_a, const MacroblockInfo& b, int block_b) {
  return IsDisturbed(a, block_a) || IsDisturbed(b, block_b) || a.motion != b.motion;
}

template <bool kAcrossRows>
void FilterMacroblock(const MacroblockMap& map, int column, int row, int strength,
                      Picture& picture) {
  constexpr int kBack = kAcrossRows ? 2 : 1;  // from a luma block to the one before it
  const MacroblockInfo& self = map.At(column, row);
  const bool has_before = (kAcrossRows ? row : column) > 0;
  const MacroblockInfo& before = kAcrossRows ? map.At(column, row - 1) : map.At(column - 1, row);
  for (int block = 0; block < kBlocks; ++block) {
    const bool inner = block < kLumaBlocks && (kAcrossRows ? block / 2 : block % 2) != 0;
    if (!inner && !has_before) continue;
    const int wrapped = block < kLumaBlocks ? block + kBack : block;
    if (inner ? IsBorderDisturbed(self, block - kBack, self, block)
              : IsBorderDisturbed(before, wrapped, self, block)) {
      const BlockPlace place = PlaceOf(block, column, row);
      const MutablePlaneView plane = picture.Plane(place.plane);
      FilterBorder<kAcrossRows>(plane.Row(place.y) + place.x, plane.stride, strength);
    }
  }
}

template <bool kAcrossRows>
void FilterAllBorders(const MutablePlaneView& plane, int strength) {
  const int first_x = kAcrossRows ? 0 : kBlockSize;
  const int first_y = kAcrossRows ? kBlockSize : 0;
  for (int y = first_y; y < plane.height; y += kBlockSize) {
    for (int x = first_x; x < plane.width; x += kBlockSize) {
      FilterBorder<kAcrossRows>(plane.Row(y) + x, plane.stride, strength);
    }
  }
}

}  // namespace

void DeblockCodedBlocks(const MacroblockMap& map, int quantiser, Picture& picture) {
  const int strength = LoopStrength(quantiser);
  const int columns = picture.Width() / kMacroblockSize;
  const int rows = picture.Height() / kMacroblockSize;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      FilterMacroblock<false>(map, column, row, strength, picture);
    }
  }
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      FilterMacroblock<true>(map, column, row, strength, picture);
    }
  }
}

void DeblockForDisplay(int quantiser, bool horizontal, bool vertical, Picture& picture) {
  const int strength = DisplayStrength(quantiser);
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    if (horizontal) FilterAllBorders<false>(picture.Plane(plane), strength);
    if (vertical) FilterAllBorders<true>(picture.Plane(plane), strength);
  }
}

}  // namespace zebx::noxcodec
