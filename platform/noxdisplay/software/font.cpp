#include "platform/noxdisplay/software/font.h"

#include <algorithm>

namespace zebx::noxdisplay {

namespace {

// What the fonts have, in the order of their glyphs, behind the box.
struct Characters {
  char32_t m_first, m_last;
};
constexpr Characters kCharacters[] = {
    {0x20, 0x7E},                        // ASCII
    {0xA0, 0xFF},                        // Latin-1
    {0x20AC, 0x20AC},                    // the euro
    {0x2013, 0x2014},                    // dashes
    {0x2018, 0x201A},                    // quotation marks
    {0x201C, 0x201E}, {0x2022, 0x2022},  // bullet
    {0x2026, 0x2026},                    // ellipsis
};

// Punctuation that looks like some of it.
constexpr struct {
  char32_t m_first, m_last, m_shown;
} kLookAlikes[] = {
    {0x2000, 0x200A, ' '},    {0x202F, 0x202F, ' '},     // spaces
    {0x2010, 0x2011, '-'},    {0x2012, 0x2012, 0x2013},  // hyphens and a dash
    {0x2015, 0x2015, 0x2014}, {0x2212, 0x2212, 0x2013},  // a bar, the minus
    {0x201B, 0x201B, 0x2018}, {0x201F, 0x201F, 0x201C},  // quotation marks
    {0x2032, 0x2032, '\''},   {0x2033, 0x2033, '"'},     // minutes, seconds
    {0x2039, 0x2039, '<'},    {0x203A, 0x203A, '>'},
};

char32_t ShownFor(char32_t character) {
  for (const auto& [first, last, shown] : kLookAlikes) {
    if (character >= first && character <= last) return shown;
  }
  return character;
}

constexpr char32_t kNoCharacter = 0xFFFD;

}  // namespace

const Glyph& Font::GlyphOf(char32_t character) const {
  character = ShownFor(character);
  std::size_t index = 1;
  for (const auto& [first, last] : kCharacters) {
    if (character >= first && character <= last) return m_glyphs[index + (character - first)];
    index += last - first + 1;
  }
  return m_glyphs[0];
}

char32_t TakeCharacter(std::string_view& text) {
  const auto byte_at = [&](std::size_t at) {
    return at < text.size() ? static_cast<BYTE>(text[at]) : BYTE{0};
  };
  const BYTE first = byte_at(0);
  const std::size_t more = first < 0xC2 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
  char32_t character = first < 0x80 ? first : kNoCharacter;
  if (more > 0 && first < 0xF5) {
    constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};  // of so many bytes more
    character = first & (0x3FU >> more);
    for (std::size_t at = 1; at <= more; ++at) {
      if ((byte_at(at) & 0xC0) != 0x80) {
        text.remove_prefix(1);
        return kNoCharacter;
      }
      character = (character << 6) | (byte_at(at) & 0x3F);
    }
    if (character < kLeast[more]) {
      character = kNoCharacter;
    } else {
      text.remove_prefix(more);
    }
  }
  text.remove_prefix(1);
  return character;
}

}  // namespace zebx::noxdisplay
