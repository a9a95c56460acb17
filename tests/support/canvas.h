// Bitmaps that tests draw into.
#pragma once

#include <span>
#include <vector>

#include "platform/os/graphics/graphics.h"

using Colors = std::vector<DWORD>;  // 0x00BBGGRR

inline os::BitmapInfoHeader HeaderOf(LONG width, LONG height, WORD bit_count) {
  os::BitmapInfoHeader header;
  header.m_width = width;
  header.m_height = height;
  header.m_bit_count = bit_count;
  return header;
}

// A memory context with a bitmap in it, black at first, its top row first.
struct Canvas {
  explicit Canvas(LONG width, WORD bit_count = 32, LONG height = 1)
      : m_bitmap(os::CreateDIBSection(m_dc, HeaderOf(width, -height, bit_count), &m_bits)) {
    os::SelectObject(m_dc, m_bitmap);
  }
  ~Canvas() {
    os::DeleteDC(m_dc);
    os::DeleteObject(m_bitmap);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  Colors Pixels() const {
    Colors pixels;
    for (int y = 0; os::GetPixel(m_dc, 0, y) != os::kNoPixel; ++y) {
      for (int x = 0; os::GetPixel(m_dc, x, y) != os::kNoPixel; ++x) {
        pixels.push_back(os::GetPixel(m_dc, x, y));
      }
    }
    return pixels;
  }

  HDC m_dc = os::CreateCompatibleDC(os::GetDC(nullptr));
  std::span<BYTE> m_bits;
  HBITMAP m_bitmap;
};
