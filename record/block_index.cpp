#include "record/block_index.h"

namespace zebx {

void BlockIndex::Start() {
  m_entries.assign(kInitialEntries, BlockEntry{});
  m_count = 0;
}

void BlockIndex::Release() {
  m_entries = {};
  m_count = 0;
}

void BlockIndex::Add(const BlockEntry& entry) {
  if (m_count < m_entries.size()) {
    m_entries[m_count] = entry;
  } else {
    m_entries.push_back(entry);
  }
  ++m_count;
}

}  // namespace zebx
