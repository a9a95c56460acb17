// Cutting a part of a recording out into a new file, and copying the moments before an alarm.
#include <algorithm>
#include <optional>

#include "platform/framework/file.h"
#include "platform/framework/file_system.h"
#include "record/file_copy.h"
#include "record/file_stub.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"

using namespace zebx;

namespace {

// The first frames of a block: how many are whole, and what they take.
struct FrameRun {
  WORD m_frames = 0;
  ULONGLONG m_bytes = 0;
  DWORD m_last_time_stamp = 0;
};

// Walks over at most `wanted` frames at the file's position.
FrameRun MeasureFrames(CFile& file, int wanted) {
  const ULONGLONG file_bytes = file.GetLength();
  FrameRun run;
  while (run.m_frames < wanted) {
    const auto header = FrameHeader::Read(file);
    if (!header || file.GetPosition() + header->BodyBytes() > file_bytes) break;
    file.Seek(file.GetPosition() + header->BodyBytes());
    ++run.m_frames;
    run.m_bytes += header->TotalBytes();
    run.m_last_time_stamp = header->m_time_stamp;
  }
  return run;
}

}  // namespace

int CZebFile::ClipFile(const CString& path, int from_block, int to_block, int to_index) {
  if (path.empty() || m_file == nullptr || m_mode != kZebFileRead) return 0;
  if (from_block < 0 || from_block >= m_index.Count()) return 0;
  if (to_block >= m_index.Count()) {
    to_block = m_index.Count() - 1;
    to_index = 0;
  }
  if (to_block < from_block || (to_block == from_block && to_index <= 0)) return 0;
  // Emptying the output would take the evidence with it.
  if (CurrentFileSystem().IsSameFile(path, GetFileName())) return 0;
  CFile clip;
  constexpr UINT kCreate = CFile::kModeCreate | CFile::kModeWrite | CFile::kShareDenyNone;
  if (clip.Open(path, kCreate) == 0) return 0;

  try {
    return CutInto(clip, from_block, to_block, to_index) ? 1 : 0;
  } catch (...) {
    DeleteIfNew(clip);
    throw;
  }
}

// Writes the clip and closes it; false when this file ends early.
bool CZebFile::CutInto(CFile& clip, int from_block, int to_block, int to_index) {
  CZebFileInfo header(static_cast<const CZebFileInfo&>(*this));
  header.SetClip(1);
  const DWORD first_stamp = m_index[from_block].m_time_stamp;
  header.SetBeginTime(GetTime(first_stamp));
  header.SetBeginTimeStamp(first_stamp);
  header.SetEndTime(header.GetBeginTime());
  header.WriteTo(clip);
  DWORD last_stamp = first_stamp;
  if (!CopyBlocks(clip, from_block, to_block, to_index, last_stamp)) return false;
  header.SetEndTime(header.GetTime(last_stamp));
  clip.SeekToBegin();
  header.WriteTo(clip);
  clip.Close();
  return true;
}

// Writes the relinked chain at the clip's position; false when this file ends early.
bool CZebFile::CopyBlocks(CFile& clip, int from_block, int to_block, int to_index,
                          DWORD& last_stamp) {
  FileCopier copier;
  DWORD previous = kNoBlock;
  for (int block = from_block; block < to_block; ++block) {
    const DWORD block_bytes = m_index[block + 1].m_offset - m_index[block].m_offset;
    const auto offset = static_cast<DWORD>(clip.GetPosition());
    BlockHeader header = ReadBlockHeader(block);
    header.m_previous = previous;
    header.m_next = offset + block_bytes;
    clip.Write(header.Format());
    const ULONGLONG frame_bytes = block_bytes - kBlockHeaderBytes;
    if (copier.Copy(*m_file, clip, frame_bytes) < frame_bytes) return false;
    previous = offset;
  }

  const auto offset = static_cast<DWORD>(clip.GetPosition());
  BlockHeader last = ReadBlockHeader(to_block);
  const ULONGLONG frames_begin = m_file->GetPosition();
  const FrameRun run = MeasureFrames(*m_file, std::min<int>(last.m_frames, to_index));
  last_stamp = run.m_frames > 0 ? run.m_last_time_stamp : last.m_time_stamp;
  last.m_previous = previous;
  last.m_next =
      run.m_frames > 0 ? static_cast<DWORD>(offset + kBlockHeaderBytes + run.m_bytes) : kNoBlock;
  last.m_frames = run.m_frames;
  clip.Write(last.Format());
  m_file->Seek(frames_begin);
  if (copier.Copy(*m_file, clip, run.m_bytes) < run.m_bytes) return false;
  if (run.m_frames > 0) clip.Write(BlockHeader{offset, kNoBlock, 0, last_stamp}.Format());
  return true;
}

int CZebFile::AlarmPreviewData(CZebFile* target, DWORD blocks) {
  if (target == nullptr) return 0;
  if (blocks == 0) return 1;
  if (m_file == nullptr || !m_file->IsOpen() || target == this) return 0;
  if (target->m_file == nullptr || target->GetTotalBlock() > 1) return 0;
  const int first = FirstPreviewBlock(blocks);
  if (first < 0) return 0;

  const CTime begin_time = GetTime(m_index[first].m_time_stamp);
  target->SetBeginTime(begin_time);
  target->SetBeginTimeStamp(m_index[first].m_time_stamp);
  CZebFrameData frame;
  const int end = m_index.Count();
  for (int block = first; block < end; ++block) CopyBlockTo(*target, block, begin_time, frame);
  return 1;
}

// The block to start at so that the last `blocks` are copied: a neighbour when it is empty, the
// earlier one first; -1 when that is empty too.
int CZebFile::FirstPreviewBlock(DWORD blocks) const {
  const int total = m_index.Count();
  const auto has_frames = [&](int block) { return block < total && FramesOf(block) > 0; };
  const int start = blocks < static_cast<DWORD>(total) ? total - static_cast<int>(blocks) : 0;
  if (has_frames(start)) return start;
  if (start == 0) return -1;
  if (has_frames(start - 1)) return start - 1;
  return has_frames(start + 1) ? start + 1 : -1;
}

void CZebFile::CopyBlockTo(CZebFile& target, int block, CTime begin_time, CZebFrameData& frame) {
  const bool is_last = block + 1 == m_index.Count();
  const ULONGLONG end = is_last ? m_file->GetLength() : m_index[block + 1].m_offset;
  ULONGLONG position = ULONGLONG{m_index[block].m_offset} + kBlockHeaderBytes;
  const DWORD frames = FramesOf(block);
  for (DWORD index = 0; index < frames; ++index) {
    m_file->Seek(position);
    const auto header = FrameHeader::Read(*m_file);
    if (!header || position + header->TotalBytes() > end) return;  // damaged from here on
    frame.Reserve(*header);
    m_file->Seek(position);
    frame.ReadFrom(*m_file);
    target.WriteOneFrame(&frame);
    // The first frame makes the writer take the time of day; the alarm file begins earlier.
    target.SetBeginTime(begin_time);
    position += header->TotalBytes();
  }
}
