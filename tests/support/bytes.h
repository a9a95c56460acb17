// Bytes as tests spell them and look at them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/framework/types.h"

// "01 2a ff" as bytes.
inline std::string Hex(std::string_view digits) {
  std::string bytes;
  std::string pair;
  for (const char digit : digits) {
    if (digit != ' ') pair += digit;
    if (pair.size() == 2)
      bytes += static_cast<char>(std::stoi(std::exchange(pair, {}), nullptr, 16));
  }
  return bytes;
}

// `count` bytes of a number, the lowest first.
inline std::string Little(std::uint64_t value, int count = 4) {
  std::string bytes;
  for (int i = 0; i < count; ++i, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  return bytes;
}

// The number at `offset`; bytes beyond the end are 0.
inline DWORD DwordAt(const std::string& bytes, std::size_t offset) {
  DWORD value = 0;
  for (std::size_t at = offset + 4; at-- > offset;) {
    value = value << 8 | (at < bytes.size() ? static_cast<BYTE>(bytes[at]) : 0U);
  }
  return value;
}
