// The outer form of video packets and the limits of what they code. docs/codec-format.md has the
// whole bit stream in prose.
#pragma once

#include <optional>
#include <span>

#include "platform/framework/types.h"

namespace zebx::noxcodec {

inline constexpr int kMacroblockSize = 16;
inline constexpr int kBlockSize = 8;
inline constexpr int kBlockPixels = kBlockSize * kBlockSize;

// Reference pictures are continued by this many pixels on every side, and a motion vector may point
// at most kMaxOvershoot pixels outside the macroblocks of the picture: the rest is interpolation's.
inline constexpr int kReferenceBorder = 32;
inline constexpr int kMaxOvershoot = 16;

// Pictures are coded in whole macroblocks.
inline int MacroblocksOf(int pixels) {
  return (pixels + kMacroblockSize - 1) / kMacroblockSize;
}

enum class FrameKind : BYTE { kIntra = 0, kPredicted = 1 };

// The first bytes of a packet, little-endian: checksum (4 bytes, CRC-32 of all that follows),
// version, kind, quantiser (a byte each), width, height (2 bytes each), reference (4 bytes). The
// range coder's bytes follow.
struct PacketHeader {
  DWORD checksum = 0;
  FrameKind kind = FrameKind::kIntra;
  int quantiser = 0;
  int width = 0;
  int height = 0;
  DWORD reference = 0;  // the checksum of the packet whose picture this one is predicted from
};

inline constexpr std::size_t kPacketHeaderBytes = 15;

// Writes the header over the first bytes of a finished packet, checksum included, and returns the
// checksum.
DWORD SealPacket(const PacketHeader& header, std::span<BYTE> packet);

// The header of a packet that is whole and undamaged and keeps every limit; otherwise nothing.
std::optional<PacketHeader> OpenPacket(std::span<const BYTE> packet);

}  // namespace zebx::noxcodec
