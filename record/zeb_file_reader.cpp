// The reading side of CZebFile: building the block index and reading frames.
#include <algorithm>
#include <new>

#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"

using namespace zebx;

int CZebFile::OpenForReading(CZebFileInfo* info) {
  m_file = std::make_unique<CFile>();
  if (m_file->Open(info->GetFileName(), CFile::kModeRead | CFile::kShareDenyNone) == 0) return 0;
  SetFileName(m_file->GetFilePath());
  if (ReadFrom(*m_file) == 0) return 0;
  SetLength(static_cast<DWORD>(m_file->GetLength()));
  *info = static_cast<const CZebFileInfo&>(*this);
  if (!LoadIndex()) return 0;

  m_block = ReadBlockHeader(0);
  m_read_position = m_index[0].m_offset + kBlockHeaderBytes;
  m_read_block = 0;
  m_read_frame = 0;
  m_mode = kZebFileRead;
  return 1;
}

// Follows the chain of block headers and reads nothing else. The end of the file ends the chain
// quietly: that is how a file is read whose writer stopped without closing, or still writes.
bool CZebFile::LoadIndex() {
  const ULONGLONG file_bytes = m_file->GetLength();
  m_index.Start();
  m_total_frames = 0;
  ULONGLONG offset = GetHeaderSize();
  std::array<BYTE, kBlockHeaderBytes> bytes;
  while (true) {
    m_file->Seek(offset);
    if (m_file->Read(bytes) < bytes.size()) break;
    const BlockHeader header = BlockHeader::Parse(bytes);
    // A chain that points backwards or into itself would never end.
    const ULONGLONG frames_begin = offset + kBlockHeaderBytes;
    const bool goes_on =
        header.m_next != kNoBlock && header.m_next < file_bytes && header.m_next >= frames_begin;
    DWORD frames = header.m_frames;
    if (goes_on) {
      // No more than there is room for: the work that a damaged file makes stays in proportion to
      // its size, however many blocks claim however many frames.
      const ULONGLONG room = (header.m_next - frames_begin) / kFrameHeaderBytes;
      frames = static_cast<DWORD>(std::min<ULONGLONG>(frames, room));
    }
    m_index.Add({static_cast<DWORD>(offset), m_total_frames, header.m_time_stamp});
    m_total_frames += frames;
    if (!goes_on) break;
    offset = header.m_next;
  }
  return m_total_frames > 0;
}

BlockHeader CZebFile::ReadBlockHeader(int block) {
  std::array<BYTE, kBlockHeaderBytes> bytes{};
  m_file->Seek(m_index[block].m_offset);
  m_file->Read(bytes);
  return BlockHeader::Parse(bytes);
}

int CZebFile::ReadOneFrame(CZebFrameData* frame, int block, int index) {
  if (m_mode != kZebFileRead || m_file == nullptr || !m_file->IsOpen()) return 0;
  if (frame == nullptr || block >= m_index.Count()) return 0;
  try {
    if (block < 0) return ReadNext(*frame);
    return index >= 0 ? ReadAt(*frame, block, index) : 0;
  } catch (const std::exception& failure) {
    ReportError(failure);
    return 0;
  }
}

int CZebFile::ReadNext(CZebFrameData& frame) {
  if (static_cast<DWORD>(m_read_frame) < FramesOf(m_read_block)) {
    m_file->Seek(m_read_position);
    return ReadHere(frame, m_read_block, m_read_frame);
  }
  for (int block = m_read_block + 1; block < m_index.Count(); ++block) {
    if (FramesOf(block) == 0) continue;
    m_file->Seek(ULONGLONG{m_index[block].m_offset} + kBlockHeaderBytes);
    return ReadHere(frame, block, 0);
  }
  return 0;
}

int CZebFile::ReadAt(CZebFrameData& frame, int block, int index) {
  while (static_cast<DWORD>(index) >= FramesOf(block)) {
    index = 0;
    if (++block == m_index.Count()) return 0;
  }
  m_file->Seek(ULONGLONG{m_index[block].m_offset} + kBlockHeaderBytes);
  for (int before = 0; before < index; ++before) {
    const auto header = FrameHeader::Read(*m_file);
    if (!header) break;
    m_file->Seek(m_file->GetPosition() + header->BodyBytes());
  }
  return ReadHere(frame, block, index);
}

// Reads the frame at the file's position. A frame that cannot be read is no end: those behind it
// may be whole, and the caller sees its empty lengths.
int CZebFile::ReadHere(CZebFrameData& frame, int block, int index) {
  frame.ReadFrom(*m_file);
  frame.SetBlockIndex(block);
  frame.SetFrameIndex(index);
  m_read_position = m_file->GetPosition();
  m_read_block = block;
  m_read_frame = index + 1;
  return 1;
}

int CZebFile::GetFilePos(int& block, int& index) const {
  if (m_mode == kZebFileRead) {
    block = m_read_block;
    index = m_read_frame;
    return HasFrameFrom(block, index) ? 1 : 0;
  }
  block = m_index.Count() > 0 ? m_index.Count() - 1 : 0;
  index = m_block.m_frames > 0 ? m_block.m_frames - 1 : 0;
  return 1;
}

// The empty block that ends a finished file is no place to read on at.
bool CZebFile::HasFrameFrom(int block, int index) const {
  for (; block < m_index.Count(); ++block, index = 0) {
    if (static_cast<DWORD>(index) < FramesOf(block)) return true;
  }
  return false;
}
