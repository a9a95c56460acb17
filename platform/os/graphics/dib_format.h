// The layout of a device-independent bitmap (DIB): its header, its colour table and its pixel rows.
//
// A packed DIB is a 40-byte header, a colour table of 4 bytes a colour (blue, green, red, unused),
// and pixel rows padded to a multiple of 4 bytes, the bottom row of the picture first.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

inline constexpr DWORD kUncompressed = 0;
inline constexpr DWORD kColorBytes = 4;

// The fields of a header as they stand: nothing is checked here.
struct ZEBX_API BitmapInfoHeader {
  LONG m_width = 0;   // pixels
  LONG m_height = 0;  // pixels; negative when the top row comes first
  WORD m_planes = 1;
  WORD m_bit_count = 0;  // bits of a pixel
  DWORD m_compression = kUncompressed;
  DWORD m_image_bytes = 0;
  LONG m_x_pixels_per_meter = 0;
  LONG m_y_pixels_per_meter = 0;
  DWORD m_colors_used = 0;  // 0: as many as the bit count allows
  DWORD m_colors_important = 0;

  static constexpr std::size_t kBytes = 40;

  // The header's own size, its first field, is taken to be kBytes.
  static BitmapInfoHeader Parse(std::span<const BYTE, kBytes> bytes);
  std::array<BYTE, kBytes> Format() const;

  // Entries of the colour table: what the header says, or else 2, 16 and 256 for 1, 4 and 8 bits,
  // and 0 for every other bit count.
  DWORD ColorCount() const;
};

// Bytes of one padded row of `bits`. Of 32 bits modulo 2^32, as readers of the format compute it.
template <std::unsigned_integral Bits>
constexpr Bits RowBytes(Bits bits) {
  constexpr Bits kPaddingBits = 32;
  return (bits + kPaddingBits - 1) / kPaddingBits * (kPaddingBits / 8);
}

}  // namespace os
