#include "tools/zebtool/console/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace zebtool {
namespace {

constexpr int kMsPerSecond = 1000;

// Whether `text` has a digit exactly where `pattern` has a '0' and the pattern's character
// elsewhere.
bool Matches(std::string_view text, std::string_view pattern) {
  if (text.size() != pattern.size()) return false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool digit = text[at] >= '0' && text[at] <= '9';
    if (pattern[at] == '0' ? !digit : text[at] != pattern[at]) return false;
  }
  return true;
}

int Digits(std::string_view text, std::size_t at, std::size_t count) {
  return static_cast<int>(ParseNumber(text.substr(at, count)).value_or(0));
}

std::optional<LONGLONG> ParseSecondsMs(std::string_view text) {
  const std::size_t point = text.find('.');
  const auto seconds = ParseNumber(text.substr(0, point));
  if (!seconds) return std::nullopt;
  LONGLONG milliseconds = LONGLONG{*seconds} * kMsPerSecond;
  if (point == std::string_view::npos) return milliseconds;
  std::string decimals(text.substr(point + 1));
  if (decimals.empty() || decimals.size() > 3) return std::nullopt;
  decimals.resize(3, '0');
  const auto thousandths = ParseNumber(decimals);
  if (!thousandths) return std::nullopt;
  return milliseconds + *thousandths;
}

}  // namespace

std::string FormatCount(ULONGLONG number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, ",");
  return text;
}

std::string FormatOffset(ULONGLONG offset) {
  std::array<char, 16> digits{};
  auto* const end = std::to_chars(digits.data(), digits.data() + digits.size(), offset, 16).ptr;
  return std::to_string(offset) + " (0x" + std::string(digits.data(), end) + ")";
}

std::string FormatDecimals(double number, int decimals) {
  std::array<char, 64> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                          std::chars_format::fixed, decimals);
  return error == std::errc() ? std::string(digits.data(), end) : "0";
}

std::string Plural(ULONGLONG count, std::string_view noun) {
  return FormatCount(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}

std::string FillLines(std::string_view text, std::size_t width) {
  std::string lines;
  while (!text.empty()) {
    std::size_t end = std::min(text.find('\n'), text.size());
    if (end > width) {
      const std::size_t space = text.substr(0, width + 1).rfind(' ');
      // A word that is longer than a line has a line of its own.
      end = space != std::string_view::npos && space > 0 ? space : std::min(text.find(' '), end);
    }
    lines += std::string(text.substr(0, end)) + '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::optional<DWORD> ParseNumber(std::string_view text) {
  DWORD number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::string FormatTime(CTime time) {
  return time.Format("%Y-%m-%d %H:%M:%S");
}

std::string FormatDay(CTime time) {
  return time.Format("%Y-%m-%d");
}

std::optional<CTime> ParseTime(std::string_view text) {
  if (!Matches(text, "0000-00-00 00:00:00")) return std::nullopt;
  const CTime time(Digits(text, 0, 4), Digits(text, 5, 2), Digits(text, 8, 2), Digits(text, 11, 2),
                   Digits(text, 14, 2), Digits(text, 17, 2));
  // The calendar carries the 31st of April over into May; such a text is a mistake.
  if (FormatTime(time) != text) return std::nullopt;
  return time;
}

std::optional<CTime> ParseNoon(const std::string& day) {
  return ParseTime(day + " 12:00:00");
}

std::optional<LONGLONG> ParseMomentMs(std::string_view text, CTime begin) {
  if (text.starts_with('+')) return ParseSecondsMs(text.substr(1));
  std::string full(text);
  if (Matches(text, "00:00:00")) full = begin.Format("%Y-%m-%d ") + full;
  const auto time = ParseTime(full);
  if (!time) return std::nullopt;
  return (LONGLONG{time->GetTime()} - LONGLONG{begin.GetTime()}) * kMsPerSecond;
}

}  // namespace zebtool
