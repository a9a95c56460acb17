// What writer, reader and clip share: opening, closing and the block queries.
#include "record/zeb_file.h"

#include <algorithm>
#include <typeinfo>

#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "record/frame_block.h"

using namespace zebx;

IMPLEMENT_DYNAMIC(CFrameBlock, CObject)

CZebFile::CZebFile() = default;

CZebFile::~CZebFile() {
  try {
    Close();
  } catch (const std::exception& failure) {
    ReportError(failure);
  }
}

int CZebFile::Open(CZebFileInfo* info, tag_ZEBFILEMODE mode) {
  if (m_file != nullptr || info == nullptr) return 0;
  if (mode != kZebFileWrite && mode != kZebFileRead) return 0;
  try {
    if ((mode == kZebFileWrite ? Create(info) : OpenForReading(info)) != 0) return 1;
  } catch (const std::exception& failure) {
    ReportError(failure);
  }
  Detach();
  return 0;
}

void CZebFile::Close() {
  try {
    if (m_file != nullptr) {
      if (m_mode == kZebFileWrite) Flush();
      if (m_file->IsOpen()) m_file->Close();
    }
  } catch (...) {
    Detach();
    throw;
  }
  Detach();
}

void CZebFile::Detach() {
  m_file.reset();
  m_index.Release();
  m_block_bytes = 0;
  m_total_frames = 0;
}

bool CZebFile::Reopen(UINT access) {
  return m_file->Open(GetFileName(), access | CFile::kShareDenyNone) != 0;
}

bool CZebFile::IsKnownBlock(int block) const {
  // The second bound hides the last entry of an index that is exactly full: relied upon as it is.
  return block >= 0 && block < m_index.Count() && block < m_index.Size() - 1;
}

int CZebFile::GetFrameNumOfBlock(int block) const {
  return IsKnownBlock(block) ? static_cast<int>(FramesOf(block)) : 0;
}

DWORD CZebFile::FramesOf(int block) const {
  const bool is_last = block + 1 == m_index.Count();
  return (is_last ? m_total_frames : m_index[block + 1].m_frames_before) -
         m_index[block].m_frames_before;
}

int CZebFile::GetFrameIndex(int block, int index) const {
  // Unsigned: the counts of a damaged file may add up to anything.
  auto number = static_cast<DWORD>(index);
  if (typeid(*this) != typeid(CZebFile)) {
    // Also behind the last block: a derived class may know of more.
    for (int before = 0; before < block; ++before) {
      number += static_cast<DWORD>(GetFrameNumOfBlock(before));
    }
    return static_cast<int>(number);
  }
  // A player asks for every frame that it shows, in files of thousands of blocks.
  const int known = std::min({block, m_index.Count(), m_index.Size() - 1});
  if (known > 0) {
    number += known < m_index.Count() ? m_index[known].m_frames_before : m_total_frames;
  }
  return static_cast<int>(number);
}

int CZebFile::GetFrameIndexOfBlock(int block) const {
  return GetFrameIndex(block, 0);
}

CTime CZebFile::GetBlockTime(int block) const {
  return IsKnownBlock(block) ? GetTime(m_index[block].m_time_stamp) : CTime();
}

DWORD CZebFile::GetBlockTimeStamp(int block) const {
  constexpr DWORD kNoTimeStamp = 0xFFFFFFFF;
  return IsKnownBlock(block) ? m_index[block].m_time_stamp : kNoTimeStamp;
}
