#include "platform/noxcodec/software/deblocking.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/noxcodec/software/narrowed.h"
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

std::int16_t Smaller(std::int16_t a, std::int16_t b) {
  return std::min(a, b);
}

std::int16_t NotNegative(int value) {
  return std::max<std::int16_t>(Narrowed(value), 0);
}

// `value` for a `sign` of 0, -`value` for one of -1.
std::int16_t Signed(std::int16_t value, std::int16_t sign) {
  return Narrowed((value ^ sign) - sign);
}

// Smooths borders between blocks, eight pixels long, many at once: they are gathered and computed
// in one plain loop over 16-bit numbers, which the compiler turns into vectors. The borders of one
// direction have no pixels in common, so their order does not matter.
template <bool kAcrossRows>
class BorderBatch {
 public:
  explicit BorderBatch(int strength) : m_strength(Narrowed(strength)) {}

  // Adds the border before the block that begins at (x, y).
  void Add(const MutablePlaneView& plane, int x, int y) {
    m_places[m_count++] = {plane.Row(y) + x, plane.stride};
    if (m_count == kBorders) Filter();
  }

  // Smooths what was added and not smoothed yet.
  void Filter() {
    const std::size_t lines = m_count * kBlockSize;
    ForEachRun(
        [](BYTE* in_plane, void* here, std::size_t bytes) { std::memcpy(here, in_plane, bytes); });
    if constexpr (!kAcrossRows) Split(lines);
    Smooth(lines);
    if constexpr (!kAcrossRows) Join(lines);
    ForEachRun([](BYTE* in_plane, const void* here, std::size_t bytes) {
      std::memcpy(in_plane, here, bytes);
    });
    m_count = 0;
  }

 private:
  static constexpr std::size_t kBorders = 32;
  static constexpr std::size_t kLines = kBorders * kBlockSize;
  static constexpr int kDepth = 4;  // pixels across a border that change, half of them before it
  struct Place {
    BYTE* block;
    std::ptrdiff_t stride;
  };

  // Calls `copy` for all pixels that lie side by side, in the plane and here.
  template <class Copy>
  void ForEachRun(Copy copy) {
    for (std::size_t i = 0; i < m_count; ++i) {
      const auto [block, stride] = m_places[i];
      if constexpr (kAcrossRows) {
        BYTE* row = block - kDepth / 2 * stride;
        for (auto& pixels : m_pixels) {
          copy(row, &pixels[i * kBlockSize], kBlockSize);
          row += stride;
        }
      } else {
        BYTE* first = block - kDepth / 2;
        for (std::size_t line = 0; line < kBlockSize; ++line) {
          copy(first, &m_words[i * kBlockSize + line], sizeof(DWORD));
          first += stride;
        }
      }
    }
  }

  // Between four pixels in a word and one in each array. Either order of the bytes will do: a
  // border is smoothed alike from both sides.
  void Split(std::size_t lines) {
    auto& [a, b, c, d] = m_pixels;
    for (std::size_t i = 0; i < lines; ++i) {
      a[i] = static_cast<BYTE>(m_words[i]);
      b[i] = static_cast<BYTE>(m_words[i] >> 8);
      c[i] = static_cast<BYTE>(m_words[i] >> 16);
      d[i] = static_cast<BYTE>(m_words[i] >> 24);
    }
  }
  void Join(std::size_t lines) {
    const auto& [a, b, c, d] = m_pixels;
    for (std::size_t i = 0; i < lines; ++i) {
      m_words[i] = DWORD{a[i]} | DWORD{b[i]} << 8 | DWORD{c[i]} << 16 | DWORD{d[i]} << 24;
    }
  }

  // Four pixels across a border: a b | c d.
  void Smooth(std::size_t lines) {
    const std::int16_t strength = m_strength;
    auto& [a, b, c, d] = m_pixels;
    for (std::size_t i = 0; i < lines; ++i) {
      const std::int16_t step8 = Narrowed(a[i] - 4 * b[i] + 4 * c[i] - d[i]);
      const std::int16_t sign = Narrowed(step8 >> 15);
      const std::int16_t height = Narrowed(Signed(step8, sign) >> 3);
      const std::int16_t excess = NotNegative(2 * (height - strength));
      const std::int16_t ramp = NotNegative(height - excess);
      const std::int16_t inner = Signed(ramp, sign);
      const std::int16_t slope = Narrowed(a[i] - d[i]);
      const std::int16_t slope_sign = Narrowed(slope >> 15);
      const std::int16_t slope_height = Narrowed(Signed(slope, slope_sign) >> 2);
      const std::int16_t outer = Signed(Smaller(slope_height, Narrowed(ramp >> 1)), slope_sign);
      a[i] = static_cast<BYTE>(a[i] - outer);
      b[i] = static_cast<BYTE>(Smaller(NotNegative(b[i] + inner), 255));
      c[i] = static_cast<BYTE>(Smaller(NotNegative(c[i] - inner), 255));
      d[i] = static_cast<BYTE>(d[i] + outer);
    }
  }

  std::int16_t m_strength;
  std::size_t m_count = 0;
  std::array<Place, kBorders> m_places;
  std::array<DWORD, kLines> m_words;
  std::array<std::array<BYTE, kLines>, kDepth> m_pixels;
};

// Whether a border inside one macroblock or between two shows.
bool IsDisturbed(const MacroblockInfo& info, int block) {
  return info.kind == MacroblockKind::kIntra || info.IsCoded(block);
}

bool IsBorderDisturbed(const MacroblockInfo& a, int block_a, const MacroblockInfo& b, int block_b) {
  return IsDisturbed(a, block_a) || IsDisturbed(b, block_b) || a.motion != b.motion;
}

// Adds the borders of a macroblock that show.
template <bool kAcrossRows>
void AddMacroblock(const MacroblockMap& map, int column, int row, Picture& picture,
                   BorderBatch<kAcrossRows>& batch) {
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
      batch.Add(picture.Plane(place.plane), place.x, place.y);
    }
  }
}

template <bool kAcrossRows>
void FilterCodedBorders(const MacroblockMap& map, int strength, Picture& picture) {
  BorderBatch<kAcrossRows> batch(strength);
  for (int row = 0; row < picture.Height() / kMacroblockSize; ++row) {
    for (int column = 0; column < picture.Width() / kMacroblockSize; ++column) {
      AddMacroblock(map, column, row, picture, batch);
    }
  }
  batch.Filter();
}

template <bool kAcrossRows>
void FilterAllBorders(int strength, Picture& picture) {
  BorderBatch<kAcrossRows> batch(strength);
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    const MutablePlaneView view = picture.Plane(plane);
    for (int y = kAcrossRows ? kBlockSize : 0; y < view.height; y += kBlockSize) {
      for (int x = kAcrossRows ? 0 : kBlockSize; x < view.width; x += kBlockSize) {
        batch.Add(view, x, y);
      }
    }
  }
  batch.Filter();
}

}  // namespace

void DeblockCodedBlocks(const MacroblockMap& map, int quantiser, Picture& picture) {
  FilterCodedBorders<false>(map, LoopStrength(quantiser), picture);
  FilterCodedBorders<true>(map, LoopStrength(quantiser), picture);
}

void DeblockForDisplay(int quantiser, bool horizontal, bool vertical, Picture& picture) {
  if (horizontal) FilterAllBorders<false>(DisplayStrength(quantiser), picture);
  if (vertical) FilterAllBorders<true>(DisplayStrength(quantiser), picture);
}

}  // namespace zebx::noxcodec
