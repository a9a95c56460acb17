// What stands behind the pixels of a snapshot file. docs/image-formats.md is its page.
#pragma once

#include <cstddef>

#include "platform/framework/types.h"

namespace zebx {

// Bits of the trailer's first byte: which fields follow, in this order. Host name and gmt go
// together.
enum : BYTE {
  kInfoTimeStamp = 0x01,
  kInfoBoardName = 0x02,
  kInfoCameraName = 0x04,
  kInfoHostNameAndGmt = 0x08,
  kInfoAny = 0x0F,
};

// A name is a 16-bit length and its characters. A reader takes no longer one.
inline constexpr std::size_t kMaxLoadedNameBytes = 255;
inline constexpr std::size_t kMaxSavedNameBytes = 0xFFFF;
inline constexpr DWORD kSnapshotPixelBytes = 3;

}  // namespace zebx
