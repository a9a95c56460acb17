// The built-in fonts: glyphs of one width for ASCII, Latin-1 and some punctuation.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <stdexcept>
#include <string_view>

#include "platform/framework/types.h"

namespace zebx::noxdisplay {

inline constexpr std::size_t kMaxGlyphRows = 18;

// Rows from the top; the lowest bit of each is the pixel on the right. Rows that a font does not
// have are 0.
using Glyph = std::array<WORD, kMaxGlyphRows>;

struct Font {
  int m_width = 0;   // pixels from character to character
  int m_height = 0;  // pixels from line to line
  std::span<const Glyph> m_glyphs;

  // The glyph of a character, or of one that looks like it; a box for what the font lacks.
  const Glyph& GlyphOf(char32_t character) const;
};

const Font& SmallFont();  // 6 x 13 pixels
const Font& LargeFont();  // 9 x 18 pixels

// Takes the first character of UTF-8 off a text that is not empty. A byte that is no UTF-8 is a
// character that no font has.
char32_t TakeCharacter(std::string_view& text);

// Glyphs from texts of hexadecimal digits, each row as many as it takes for `width` bits.
template <int width, int height, std::size_t count>
consteval std::array<Glyph, count> ParseGlyphs(const std::string_view (&texts)[count]) {
  constexpr std::size_t kDigits = (width + 3) / 4;
  std::array<Glyph, count> glyphs = {};
  for (std::size_t i = 0; i < count; ++i) {
    if (texts[i].size() != kDigits * height) throw std::length_error("a glyph of another size");
    for (std::size_t at = 0; at < texts[i].size(); ++at) {
      const char digit = texts[i][at];
      const int value = digit <= '9' ? digit - '0' : digit - 'A' + 10;
      WORD& row = glyphs[i][at / kDigits];
      row = static_cast<WORD>(row * 16 + value);
    }
  }
  return glyphs;
}

}  // namespace zebx::noxdisplay
