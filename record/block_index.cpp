#include "record/block_index.h"

#include <algorithm>

void BlockIndex::Start() {
  m_entries.assign(kInitialEntries, BlockEntry{});
  m_count = 0;
}

void BlockIndex::Release() {
  m_entries = {};
  m_count = 0;
}

void BlockIndex::Add(const BlockEntry& entry) {
  constexpr std::size_t kLeastGrowth = 4;
  constexpr std::size_t kMostGrowth = 1024;
  if (m_count < m_entries.size()) {
    m_entries[m_count] = entry;
  } else {
    if (m_entries.size() == m_entries.capacity()) {
      const std::size_t growth = std::clamp(m_entries.size() / 8, kLeastGrowth, kMostGrowth);
      m_entries.reserve(m_entries.size() + growth);
    }
    m_entries.push_back(entry);
  }
  ++m_count;
}
