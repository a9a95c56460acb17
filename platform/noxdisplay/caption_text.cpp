#include "platform/noxdisplay/caption_text.h"

#include <algorithm>
#include <cstdint>

namespace zebx::noxdisplay {

namespace {

std::size_t SkipAll(std::string_view format, std::size_t at, std::string_view letters) {
  return std::min(format.find_first_not_of(letters, at), format.size());
}

// The length of the conversion that a format begins with; of an unfinished one, only the "%", so
// that what is no conversion after all stays to be read.
std::size_t ConversionLength(std::string_view format) {
  constexpr std::string_view kDigits = "0123456789*";
  std::size_t at = SkipAll(format, 1, "-+ #0");
  at = SkipAll(format, at, kDigits);
  if (format.substr(at).starts_with('.')) at = SkipAll(format, at + 1, kDigits);
  const std::string_view size = format.substr(at);
  const bool has_bits = size.starts_with("I64") || size.starts_with("I32");
  at = has_bits ? at + 3 : SkipAll(format, at, "hlLwIqjzt");
  constexpr std::string_view kConversions = "diouxXeEfFgGaAcCsSpnZ";
  const bool is_whole =
      at < format.size() && kConversions.find(format[at]) != std::string_view::npos;
  return is_whole ? at + 1 : 1;
}

// The bytes that the first character of a text has: one for what is no UTF-8.
std::size_t CharacterBytes(std::string_view text) {
  const auto first = static_cast<std::uint8_t>(text.front());
  const std::size_t wanted = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  std::size_t bytes = 1;
  while (bytes < wanted && bytes < text.size() && (text[bytes] & 0xC0) == 0x80) ++bytes;
  return bytes;
}

std::size_t Put(std::string_view text, std::span<char> field, bool is_format) {
  if (field.empty()) return 0;
  text = text.substr(0, text.find('\0'));
  const std::size_t room = field.size() - 1;
  std::size_t length = 0;
  while (!text.empty()) {
    const bool is_percent = is_format && text.starts_with("%%");
    if (is_format && text.front() == '%' && !is_percent) {
      text.remove_prefix(ConversionLength(text));
      continue;
    }
    const std::size_t bytes = CharacterBytes(text);
    if (bytes > room - length) break;
    std::ranges::copy(text.substr(0, bytes), field.data() + length);
    length += bytes;
    text.remove_prefix(is_percent ? 2 : bytes);
  }
  field[length] = '\0';
  return length;
}

}  // namespace

std::size_t PutCaptionText(std::string_view text, std::span<char> field) {
  return Put(text, field, true);
}

std::size_t PutPlainText(std::string_view text, std::span<char> field) {
  return Put(text, field, false);
}

}  // namespace zebx::noxdisplay
