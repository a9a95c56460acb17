#include "platform/noxdisplay/caption_text.h"

#include <gtest/gtest.h>

#include <string>

using namespace zebx;
using namespace std::string_view_literals;

namespace {

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
  constexpr std::string_view kTexts[][2] = {
      {"100%% of %s%d", "100% of "},
      {"a%-+ #08.3lfb%*.*hhXc", "abc"},
      {"a%I64db%I32ub%llxc%zub%Iud", "abbcbd"},
      {"%", ""},
      {"Gate 5%", "Gate 5"},
      {"50% – Tür", "50 – Tür"},
      {"1%.%%2%5%s%03", "1.%2503"},
      {"%%%%%%", "%%%"},
      {"ends\0here"sv, "ends"},
  };
  for (const auto& [text, caption] : kTexts) EXPECT_EQ(Caption(text), caption) << text;
}

TEST(CaptionText, IsCutBetweenTwoCharacters) {
  for (const auto& [text, caption] : {std::pair{"abcd", "abc"},
                                      {"ab\u00fc", "ab"},
                                      {"a\u00fc%s", "a\u00fc"},
                                      {"a\u20ac", "a"},
                                      {"\U0001F6AA", ""},
                                      {"abc%%", "abc"}}) {
    EXPECT_EQ(Caption(text, 4), caption);
  }
  // No UTF-8: bytes inside a character without its first one.
  EXPECT_EQ(Caption(std::string(90, '\x80'), 65), std::string(64, '\x80'));
  EXPECT_EQ(Caption("a", 1), "");
  EXPECT_EQ(Caption("a", 0), std::string(100, '#'));
}

}  // namespace
