// Drawing of filled rectangles and texts into a picture of 32 bits a pixel.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/noxdisplay/software/font.h"
#include "platform/os/graphics/pixels.h"
#include "platform/os/windows/windows.h"

namespace zebx::noxdisplay {

// A font, each pixel of it a square of `m_factor` pixels a side.
struct TextFace {
  const Font* m_font = nullptr;
  int m_factor = 1;

  int Width() const { return m_font->m_width * m_factor; }    // of a character
  int Height() const { return m_font->m_height * m_factor; }  // of a line
};

// Borrows the picture. What lies outside it is left out; coordinates stay below 2^30.
class Canvas {
 public:
  explicit Canvas(const os::WindowPicture& picture)
      : m_width(picture.m_size.cx), m_height(picture.m_size.cy), m_pixels(picture.m_pixels) {}

  LONG Width() const { return m_width; }
  LONG Height() const { return m_height; }
  // All of it, to copy pictures into.
  os::PixelTarget Target() const;

  // Fills a rectangle of which right and bottom are outside.
  void Fill(LONG left, LONG top, LONG right, LONG bottom, os::Color color) const;
  // Fills the edges of a rectangle, on its inside.
  void Frame(LONG left, LONG top, LONG right, LONG bottom, LONG thickness, os::Color color) const;
  // Writes one line with its upper left corner at (x, y), as many characters as fit into `width`
  // pixels; where some are left out the last one is an ellipsis. The letters have an outline, dark
  // round light ones and light round dark ones, which reaches one pixel of the face farther.
  void Write(LONG x, LONG y, LONG width, std::string_view text, const TextFace& face,
             os::Color color) const;

 private:
  void Draw(LONG x, LONG y, const Glyph& glyph, const TextFace& face, bool is_outline,
            os::Color color) const;

  LONG m_width;
  LONG m_height;
  std::span<BYTE> m_pixels;
};

// How many pixels a text takes, without its outline.
LONG WidthOf(std::string_view text, const TextFace& face);

}  // namespace zebx::noxdisplay
