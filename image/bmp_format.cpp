#include "image/bmp_format.h"

#include "platform/framework/byte_order.h"

namespace zebx {

namespace {

constexpr WORD kBmpType = 0x4D42;  // the characters "BM"

}  // namespace

std::array<BYTE, kBmpFileHeaderBytes> FormatBmpFileHeader(DWORD file_bytes, DWORD bits_offset) {
  std::array<BYTE, kBmpFileHeaderBytes> header;
  ByteWriter writer(header);
  writer.Put(kBmpType);
  writer.Put(file_bytes);
  writer.Put(WORD{0});  // reserved
  writer.Put(WORD{0});  // reserved
  writer.Put(bits_offset);
  return header;
}

bool IsBmpFileHeader(std::span<const BYTE, kBmpFileHeaderBytes> header) {
  return ByteReader(header).Get<WORD>() == kBmpType;
}

}  // namespace zebx
