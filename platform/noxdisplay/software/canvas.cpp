#include "platform/noxdisplay/software/canvas.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace zebx::noxdisplay {

namespace {

constexpr os::Color kDark = 0x101010;
constexpr os::Color kLight = 0xF0F0F0;
constexpr char32_t kEllipsis = 0x2026;

// What is read of both round a letter: dark round light ones.
os::Color OutlineOf(os::Color color) {
  const DWORD red = color >> 16 & 0xFF, green = color >> 8 & 0xFF, blue = color & 0xFF;
  const DWORD brightness = (red * 77 + green * 150 + blue * 29) >> 8;
  return brightness < 0x48 ? kLight : kDark;
}

std::size_t CharactersOf(std::string_view text) {
  std::size_t count = 0;
  for (; !text.empty(); ++count) TakeCharacter(text);
  return count;
}

}  // namespace

LONG WidthOf(std::string_view text, const TextFace& face) {
  return static_cast<LONG>(CharactersOf(text)) * face.Width();
}

os::PixelTarget Canvas::Target() const {
  return {os::PixelLayout::OfWords({m_width, m_height}), m_pixels, {}};
}

void Canvas::Fill(LONG left, LONG top, LONG right, LONG bottom, os::Color color) const {
  left = std::max<LONG>(left, 0);
  right = std::min(right, m_width);
  bottom = std::min(bottom, m_height);
  for (LONG y = std::max<LONG>(top, 0); y < bottom; ++y) {
    BYTE* const row = m_pixels.data() + static_cast<std::size_t>(y) *
                                            static_cast<std::size_t>(m_width) * sizeof(color);
    for (LONG x = left; x < right; ++x) {
      std::memcpy(row + static_cast<std::size_t>(x) * sizeof(color), &color, sizeof(color));
    }
  }
}

void Canvas::Frame(LONG left, LONG top, LONG right, LONG bottom, LONG thickness,
                   os::Color color) const {
  const LONG upper = std::min(top + thickness, bottom);
  const LONG lower = std::max(bottom - thickness, upper);
  Fill(left, top, right, upper, color);
  Fill(left, lower, right, bottom, color);
  const LONG inner = std::min(left + thickness, right);
  Fill(left, upper, inner, lower, color);
  Fill(std::max(right - thickness, inner), upper, right, lower, color);
}

void Canvas::Write(LONG x, LONG y, LONG width, std::string_view text, const TextFace& face,
                   os::Color color) const {
  if (width < face.Width()) return;
  const auto room = static_cast<std::size_t>(width / face.Width());
  const std::size_t count = CharactersOf(text);
  // Outlines first: that of a letter may lie where its neighbour is.
  for (const bool is_outline : {true, false}) {
    std::string_view rest = text;
    LONG at = x;
    for (std::size_t i = 0; i < std::min(count, room); ++i) {
      const bool is_cut = i + 1 == room && count > room;
      const char32_t character = is_cut ? kEllipsis : TakeCharacter(rest);
      Draw(at, y, face.m_font->GlyphOf(character), face, is_outline,
           is_outline ? OutlineOf(color) : color);
      at += face.Width();
    }
  }
}

void Canvas::Draw(LONG x, LONG y, const Glyph& glyph, const TextFace& face, bool is_outline,
                  os::Color color) const {
  // Each row with a column more on both sides, in the high bits of a word.
  constexpr int kWordBits = 16;
  const int shift = kWordBits - 1 - face.m_font->m_width;
  const auto row_at = [&](int row) -> DWORD {
    const bool is_row = row >= 0 && row < face.m_font->m_height;
    return is_row ? DWORD{glyph[static_cast<std::size_t>(row)]} << shift : 0;
  };
  for (int row = is_outline ? -1 : 0; row < face.m_font->m_height + (is_outline ? 1 : 0); ++row) {
    DWORD bits = row_at(row);
    if (is_outline) {
      bits |= row_at(row - 1) | row_at(row + 1);
      bits |= (bits << 1) | (bits >> 1);
    }
    auto left = static_cast<WORD>(bits);
    const LONG top = y + row * face.m_factor;
    while (left != 0) {
      const int begin = std::countl_zero(left);
      const int end = begin + std::countl_one(static_cast<WORD>(left << begin));
      Fill(x + (begin - 1) * face.m_factor, top, x + (end - 1) * face.m_factor, top + face.m_factor,
           color);
      left = static_cast<WORD>(left & (0xFFFF >> end));
    }
  }
}

}  // namespace zebx::noxdisplay
