#include "tools/zebtool/json_writer.h"

#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

// The length of the valid UTF-8 sequence of two or more bytes at the front of `text`, 0 if none.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : byte(0) >= 0xC2 ? 2 : 0;
  if (length == 0 || byte(0) > 0xF4 || text.size() < length) return 0;
  for (std::size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0) != 0x80) return 0;
  }
  return length;
}

std::string Quoted(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string quoted = "\"";
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte == '"' || byte == '\\') {
      quoted += '\\';
      quoted += text[at];
    } else if (byte >= 0x20 && byte < 0x7F) {
      quoted += text[at];
    } else if (const std::size_t length = SequenceLength(text.substr(at)); length > 0) {
      quoted += text.substr(at, length);
      at += length - 1;
    } else {
      quoted += "\\u00";
      quoted += kDigits[byte >> 4];
      quoted += kDigits[byte & 0x0F];
    }
  }
  return quoted + '"';
}

}  // namespace

void JsonWriter::StartValue(std::string_view key) {
  if (!m_has_values.empty()) {
    if (m_has_values.back()) m_out << ',';
    m_has_values.back() = true;
    m_out << '\n' << std::string(2 * m_has_values.size(), ' ');
  }
  if (!key.empty()) m_out << Quoted(key) << ": ";
}

void JsonWriter::Raw(std::string_view key, std::string_view value) {
  StartValue(key);
  m_out << value;
}

void JsonWriter::Value(std::string_view key, std::string_view text) {
  Raw(key, Quoted(text));
}

void JsonWriter::Value(std::string_view key, double number) {
  Raw(key, FormatDecimals(number, 3));
}

void JsonWriter::Begin(std::string_view key, char bracket) {
  StartValue(key);
  m_out << bracket;
  m_has_values.push_back(false);
}

void JsonWriter::End(char bracket) {
  const bool had_values = m_has_values.back();
  m_has_values.pop_back();
  if (had_values) m_out << '\n' << std::string(2 * m_has_values.size(), ' ');
  m_out << bracket;
  if (m_has_values.empty()) m_out << '\n';
}

}  // namespace zebtool
