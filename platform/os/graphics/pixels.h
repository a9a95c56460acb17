// Pictures as rows of pixels of 1 to 32 bits.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "platform/framework/geometry.h"
#include "platform/framework/types.h"
#include "platform/os/graphics/dib_format.h"

namespace os {

// Where the rows of a picture lie in its bytes. Rows are counted from the top of the picture.
struct PixelLayout {
  LONG m_width = 0;
  LONG m_height = 0;
  WORD m_bit_count = 0;  // 1, 4, 8 with colour table; 16 (5 bits a colour), 24, 32
  std::size_t m_pitch_bytes = 0;
  bool m_top_down = false;

  // The layout of a DIB's rows; nothing for a compressed one, another bit count, an empty picture
  // and one of more than kMaxBytes.
  static std::optional<PixelLayout> Of(const BitmapInfoHeader& header);
  // Pixels of 32 bits, rows from the top without gaps. The size is one of those that fit.
  static PixelLayout OfWords(CSize size);
  std::size_t TotalBytes() const { return m_pitch_bytes * static_cast<std::size_t>(m_height); }
  std::size_t RowOffset(LONG row) const {
    return m_pitch_bytes * static_cast<std::size_t>(m_top_down ? row : m_height - 1 - row);
  }
  // In its row, of the byte in which a pixel begins.
  std::size_t PixelOffset(LONG column) const {
    return static_cast<std::size_t>(column) * m_bit_count / 8;
  }

  static constexpr ULONGLONG kMaxBytes = 0x20000000;
};

// A colour as 0x00RRGGBB: the bytes of a 32-bit pixel.
using Color = DWORD;
inline constexpr Color kColorMask = 0x00FFFFFF;

// Pixels are moved as numbers of four bytes, which vectorises.
static_assert(std::endian::native == std::endian::little);

// The colour of a pixel of 32 bits, or of 24 when a byte of another pixel follows.
inline Color LoadColor(const BYTE* at) {
  Color color;
  std::memcpy(&color, at, sizeof(color));
  return color & kColorMask;
}

// The colours of a DIB's colour table, at most as many as the bit count can tell apart.
std::vector<Color> ParseColorTable(std::span<const BYTE> table, WORD bit_count);

// A picture to read from, borrowed. `m_bytes` holds at least TotalBytes of the layout.
struct PixelSource {
  PixelLayout m_layout;
  std::span<const BYTE> m_bytes;
  std::span<const Color> m_colors;  // a pixel beyond it is black

  // The pixels of a row from column `from` on, as many as `pixels` holds; all inside the picture.
  void ReadRow(LONG row, LONG from, std::span<Color> pixels) const;
};

// A picture to draw into, borrowed likewise.
struct PixelTarget {
  PixelLayout m_layout;
  std::span<BYTE> m_bytes;
  std::span<const Color> m_colors;  // a pixel becomes the nearest of them

  void WriteRow(LONG row, LONG from, std::span<const Color> pixels) const;
};

// Copies `count` pixels of a row to a row of another picture, all inside both.
void CopyPixels(const PixelSource& source, LONG row, LONG from, const PixelTarget& target,
                LONG onto_row, LONG onto, std::size_t count);

}  // namespace os
