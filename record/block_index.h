// The block index of an open recording file: one entry per block, held in memory.
#pragma once

#include <deque>

#include "platform/framework/types.h"

namespace zebx {

struct BlockEntry {
  DWORD m_offset = 0;  // of the block header in the file
  // In all blocks before this one, modulo 2^32: so a frame is numbered without counting.
  DWORD m_frames_before = 0;
  DWORD m_time_stamp = 0;  // of the first frame
};

// Invariant: Count() <= Size(). Size() starts at kInitialEntries, so that a recording of ordinary
// length allocates once, and is what the block queries' second bound looks at. Beyond that it grows
// in small pieces that never move: a chain of millions of blocks costs no copying.
class BlockIndex {
 public:
  // Empties the index and gives it its initial size.
  void Start() {
    m_entries.assign(kInitialEntries, BlockEntry{});
    m_count = 0;
  }
  // Releases the memory.
  void Release() {
    m_entries = {};
    m_count = 0;
  }

  void Add(const BlockEntry& entry) {
    if (m_count < m_entries.size()) {
      m_entries[m_count] = entry;
    } else {
      m_entries.push_back(entry);
    }
    ++m_count;
  }
  // Takes the last entry back.
  void RemoveLast() { --m_count; }

  int Count() const { return static_cast<int>(m_count); }
  int Size() const { return static_cast<int>(m_entries.size()); }
  // `block` must be at least 0 and below Count().
  BlockEntry& operator[](int block) { return m_entries[static_cast<std::size_t>(block)]; }
  const BlockEntry& operator[](int block) const {
    return m_entries[static_cast<std::size_t>(block)];
  }
  BlockEntry& Last() { return m_entries[m_count - 1]; }
  const BlockEntry& Last() const { return m_entries[m_count - 1]; }

  static constexpr std::size_t kInitialEntries = 1024;

 private:
  std::deque<BlockEntry> m_entries;
  std::size_t m_count = 0;
};

}  // namespace zebx
