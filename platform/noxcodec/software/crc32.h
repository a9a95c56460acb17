// The checksum of video packets.
#pragma once

#include <span>

#include "platform/framework/types.h"

namespace zebx::noxcodec {

// CRC-32 with the reflected polynomial 0xEDB88320, initial value and final inversion 0xFFFFFFFF.
DWORD Crc32(std::span<const BYTE> bytes);

}  // namespace zebx::noxcodec
