// The file header in front of every BMP file, snapshots included. docs/image-formats.md is its
// page.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "platform/framework/types.h"

namespace zebx {

inline constexpr std::size_t kBmpFileHeaderBytes = 14;

// Both sizes count from the start of the file: its length, and where the pixel rows begin.
std::array<BYTE, kBmpFileHeaderBytes> FormatBmpFileHeader(DWORD file_bytes, DWORD bits_offset);

// True when the type is that of a BMP file. The other fields tell a reader nothing it needs.
bool IsBmpFileHeader(std::span<const BYTE, kBmpFileHeaderBytes> header);

}  // namespace zebx
