// How the pictures of this room lie in memory: as a CImage holds them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>

#include "platform/framework/geometry.h"
#include "platform/framework/types.h"

namespace zebtool {

inline constexpr BYTE kBackground = 0x28;
inline constexpr std::size_t kImageBytes = 3;  // of a pixel

// The index of a pixel in rows of `width`.
inline std::size_t PixelAt(LONG width, LONG x, LONG y) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(y) +
         static_cast<std::size_t>(x);
}

inline std::unique_ptr<BYTE[]> MakeBackground(CSize size) {
  const std::size_t bytes = kImageBytes * PixelAt(size.cx, 0, size.cy);
  auto pixels = std::make_unique<BYTE[]>(bytes);
  std::fill_n(pixels.get(), bytes, kBackground);
  return pixels;
}

}  // namespace zebtool
