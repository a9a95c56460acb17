#include "platform/noxdisplay/noxdisplay.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/noxdisplay/caption_text.h"
#include "platform/noxdisplay/software/display_control.h"
#include "tests/support/canvas.h"

using namespace zebx;
using namespace std::string_view_literals;

namespace {

TEST(DrawDib, DrawsUnpaddedRowsFromTheBottomUpScaledWithMeans) {
  // Rows of six pixels, which take no multiple of 4 bytes, and of four, which do.
  BYTE picture[6 * 2 * 3] = {};
  for (BYTE i = 0; i < 12; ++i) picture[3 * i + 2] = static_cast<BYTE>(2 * i);
  for (const DWORD width : {6U, 4U}) {
    const Canvas canvas(2, 32, 2);
    const CSize size = {static_cast<LONG>(width), 2};
    const CRect whole = {0, 0, 2, 2};
    ASSERT_EQ(noxshowDrawDib(picture, &size, canvas.m_dc, &whole), 0);
    const DWORD left = width / 2 - 1, right = left + width;
    EXPECT_EQ(canvas.Pixels(), (Colors{left + 2 * width, right + 2 * width, left, right}));
  }
}

TEST(Watermark, IsTheLastPictureThatWasWhole) {
  const std::vector<BYTE> pixels = {1, 2, 3, 4, 5, 6, 0, 0};
  ASSERT_EQ(noxshowSetWatermark(pixels.data(), 8, 2, 1), 0);
  EXPECT_NE(noxshowSetWatermark(pixels.data(), 8, 0xFFFFFFFF, 0xFFFFFFFF), 0);
  EXPECT_EQ(noxdisplay::CurrentWatermark().value().m_pixels, pixels);
}

// The text as it stands in a field of that many bytes, in front of bytes that have to stay.
std::string Caption(std::string_view text, std::size_t field_bytes = 65) {
  std::string field(100, '#');
  const std::size_t length = noxdisplay::PutCaptionText(text, std::span(field).first(field_bytes));
  if (field_bytes == 0) return field;
  EXPECT_EQ(field[length], '\0');
  EXPECT_EQ(field.find_first_not_of('#', length + 1), std::string::npos);
  return field.substr(0, length);
}

TEST(CaptionText, IsAFormatWithoutArguments) {
  constexpr std::string_view kTexts[][2] = {{"100%% of %s%d", "100% of "},
                                            {"a%-+ #08.3lfb%*.*hhXc", "abc"},
                                            {"a%I64db%I32ub%llxc%zub%Iud", "abbcbd"},
                                            {"%", ""},
                                            {"Gate 5%", "Gate 5"},
                                            {"50% – Tür", "50 – Tür"},
                                            {"1%.%%2%5%s%03", "1.%2503"},
                                            {"%%%%%%", "%%%"},
                                            {"ends\0here"sv, "ends"}};
  for (const auto& [text, caption] : kTexts) EXPECT_EQ(Caption(text), caption) << text;
}

TEST(CaptionText, IsCutBetweenTwoCharacters) {
  constexpr std::string_view kTexts[][2] = {{"abcd", "abc"},          {"ab\u00fc", "ab"},
                                            {"a\u00fc%s", "a\u00fc"}, {"a\u20ac", "a"},
                                            {"\U0001F6AA", ""},       {"abc%%", "abc"}};
  for (const auto& [text, caption] : kTexts) EXPECT_EQ(Caption(text, 4), caption);
  // No UTF-8: bytes inside a character without its first one.
  EXPECT_EQ(Caption(std::string(90, '\x80'), 65), std::string(64, '\x80'));
  EXPECT_EQ(Caption("a", 1), "");
  EXPECT_EQ(Caption("a", 0), std::string(100, '#'));
}

}  // namespace
