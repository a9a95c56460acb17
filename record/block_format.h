// The block header of a recording file: 16 bytes that link the blocks of a file into a chain.
// docs/recording-format.md is its page.
#pragma once

#include <array>
#include <span>

#include "platform/framework/byte_order.h"

namespace zebx {

inline constexpr std::size_t kBlockHeaderBytes = 16;

// Stands for "no block": before the first block, and behind the last.
inline constexpr DWORD kNoBlock = 0xFFFFFFFF;

struct BlockHeader {
  DWORD m_previous = kNoBlock;  // file offset of the previous block header
  DWORD m_next = kNoBlock;      // file offset of the next block header
  WORD m_frames = 0;
  DWORD m_time_stamp = 0;  // of the first frame

  static constexpr std::size_t kReservedAt = 10;

  static BlockHeader Parse(std::span<const BYTE, kBlockHeaderBytes> bytes) {
    ByteReader reader(bytes);
    BlockHeader header;
    header.m_previous = reader.Get<DWORD>();
    header.m_next = reader.Get<DWORD>();
    header.m_frames = reader.Get<WORD>();
    reader.Get<WORD>();  // reserved
    header.m_time_stamp = reader.Get<DWORD>();
    return header;
  }

  std::array<BYTE, kBlockHeaderBytes> Format() const {
    std::array<BYTE, kBlockHeaderBytes> bytes{};
    ByteWriter writer(bytes);
    writer.Put(m_previous);
    writer.Put(m_next);
    writer.Put(m_frames);
    writer.Put(WORD{0});  // reserved
    writer.Put(m_time_stamp);
    return bytes;
  }
};

}  // namespace zebx
