#include "platform/noxcodec/software/crc32.h"

#include <array>

namespace zebx::noxcodec {
namespace {

constexpr std::array<DWORD, 256> kTable = [] {
  std::array<DWORD, 256> table{};
  for (DWORD index = 0; index < table.size(); ++index) {
    DWORD value = index;
    for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320 : 0);
    table[index] = value;
  }
  return table;
}();

}  // namespace

DWORD Crc32(std::span<const BYTE> bytes) {
  DWORD crc = 0xFFFFFFFF;
  for (const BYTE byte : bytes) crc = (crc >> 8) ^ kTable[(crc ^ byte) & 0xFF];
  return ~crc;
}

}  // namespace zebx::noxcodec
