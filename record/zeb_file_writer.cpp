// The writing side of CZebFile: creating a file, appending frames and prepared blocks, finishing.
#include <new>
#include <optional>
#include <utility>

#include "platform/framework/file.h"
#include "platform/os/clock.h"
#include "platform/os/files/files.h"
#include "record/file_copy.h"
#include "record/frame_block.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"

using namespace zebx;

namespace {

// An I-frame starts a new block when the block holds more frames than this...
constexpr WORD kFramesOfFullBlock = 100;
// ... or, from RT8Port boards, when it is this many I-frames on.
constexpr DWORD kRT8PortIFramesOfFullBlock = 10;

// What the 16-bit count of a block header can hold.
constexpr WORD kMaxFramesOfBlock = 0xFFFF;

}  // namespace

// What a frame changes in memory, to be put back when the disk refuses it: the file then goes on,
// or is finished, as if the frame had never been offered.
class CZebFile::Undo {
 public:
  explicit Undo(CZebFile& file)
      : m_file(file),
        m_block(file.m_block),
        m_block_bytes(file.m_block_bytes),
        m_total_frames(file.m_total_frames),
        m_i_frames(file.m_i_frames),
        m_blocks(file.m_index.Count()),
        m_last_entry(file.m_index.Last()),
        m_flags(file.GetFlags()),
        m_begin_time(file.GetBeginTime()),
        m_end_time(file.GetEndTime()),
        m_begin_time_stamp(file.GetBeginTimeStamp()),
        m_gmt(file.GetGmt()),
        m_length(file.GetLength()) {}

  void Restore() const {
    m_file.m_block = m_block;
    m_file.m_block_bytes = m_block_bytes;
    m_file.m_total_frames = m_total_frames;
    m_file.m_i_frames = m_i_frames;
    while (m_file.m_index.Count() > m_blocks) m_file.m_index.RemoveLast();
    m_file.m_index.Last() = m_last_entry;
    m_file.SetFlags(m_flags);
    m_file.SetBeginTimeKeepingGmt(m_begin_time);
    m_file.SetEndTime(m_end_time);
    m_file.SetBeginTimeStamp(m_begin_time_stamp);
    m_file.SetGmt(m_gmt);
    m_file.SetLength(m_length);
    m_file.DropPartialFrame();
  }

 private:
  CZebFile& m_file;
  BlockHeader m_block;
  DWORD m_block_bytes;
  DWORD m_total_frames;
  DWORD m_i_frames;
  int m_blocks;
  BlockEntry m_last_entry;
  DWORD m_flags;
  CTime m_begin_time;
  CTime m_end_time;
  DWORD m_begin_time_stamp;
  int m_gmt;
  DWORD m_length;
};

int CZebFile::Create(CZebFileInfo* info) {
  CZebFileInfo::operator=(*info);
  m_file = std::make_unique<CFile>();
  if (!Reopen(CFile::kModeCreate | CFile::kModeReadWrite)) return 0;
  WriteHeader();
  m_block = {kNoBlock, kNoBlock, 0, os::GetTickCount()};
  m_block_bytes = 0;
  WriteBlockHeader(GetHeaderSize(), m_block);
  m_file->Close();  // until the first frame, so that many prepared files cost no handles

  m_mode = kZebFileWrite;
  m_total_frames = 0;
  m_index.Start();
  m_index.Add({GetHeaderSize(), 0, 0});
  return 1;
}

int CZebFile::WriteOneFrame(CZebFrameData* frame) {
  return AppendFrame(frame, FrameSource::kLive);
}

int CZebFile::WritePreAlarmFrame(CZebFrameData* frame) {
  return AppendFrame(frame, FrameSource::kPreAlarm);
}

int CZebFile::AppendFrame(const CZebFrameData* frame, FrameSource source) {
  if (m_file == nullptr || m_mode != kZebFileWrite) return kWriteNoFile;
  if (frame == nullptr || !frame->IsWritable()) return kWriteNoFile;
  if (m_block.m_frames == 0 && !frame->IsIFrame()) return kFrameDropped;
  if (IsFull(*frame)) return kWriteFileFull;
  const Undo undo(*this);
  try {
    if (!m_file->IsOpen()) {
      if (!Reopen(CFile::kModeReadWrite)) return kWriteNoFile;
      SetLength(static_cast<DWORD>(m_file->GetLength()));
    }
    Append(*frame, source);
    return kFrameWritten;
  } catch (const CFileException&) {
    undo.Restore();
    return kWriteFileError;
  } catch (const std::bad_alloc&) {
    undo.Restore();
    return kWriteNoMemory;
  }
}

void CZebFile::Append(const CZebFrameData& frame, FrameSource source) {
  const bool counts_i_frames = frame.GetEncoderType() == kEncoderTypeRT8Port;
  if (counts_i_frames) {
    SetRT8Port();
    if (frame.IsIFrame()) ++m_i_frames;
  }
  const DWORD time_stamp = frame.GetTimeStamp();
  // Read once, so that a file's times cannot straddle a second; never for frames of the past.
  const auto now =
      source == FrameSource::kLive ? std::optional(CTime::GetCurrentTime()) : std::nullopt;
  if (StartsBlock(frame)) {
    if (counts_i_frames) m_i_frames = 0;
    WriteHeader();
    StartBlock(time_stamp, time_stamp);
  } else if (m_block.m_frames == 0) {
    BeginFile(time_stamp, now);
  }

  ++m_total_frames;
  if (now) SetEndTime(*now);
  ++m_block.m_frames;
  m_index.Last().m_frames = m_block.m_frames;
  m_file->Seek(AppendOffset());
  const DWORD bytes = frame.WriteTo(*m_file);
  m_block_bytes += bytes;
  SetLength(GetLength() + bytes);
}

bool CZebFile::Fits(ULONGLONG bytes) const {
  return AppendOffset() + bytes < kNoBlock;
}

bool CZebFile::IsFull(const CZebFrameData& frame) const {
  if (GetLength() >= kMaxFileBytes) return true;
  // Offsets have 32 bits, and a block must be able to count its frames.
  if (!Fits(kBlockHeaderBytes + frame.GetHeader().TotalBytes())) return true;
  return m_block.m_frames == kMaxFramesOfBlock && !frame.IsIFrame();
}

bool CZebFile::StartsBlock(const CZebFrameData& frame) const {
  if (!frame.IsIFrame() || m_block.m_frames == 0) return false;
  if (frame.GetEncoderType() == kEncoderTypeRT8Port) {
    return m_i_frames >= kRT8PortIFramesOfFullBlock || m_block.m_frames == kMaxFramesOfBlock;
  }
  return m_block.m_frames > kFramesOfFullBlock;
}

void CZebFile::BeginFile(DWORD time_stamp, std::optional<CTime> now) {
  if (now) {
    SetBeginTime(*now);
    SetEndTime(*now);
  } else if (time_stamp < GetBeginTimeStamp()) {
    // gmt stays that of the alarm's moment.
    SetBeginTimeKeepingGmt(GetBeginTime() - (GetBeginTimeStamp() - time_stamp) / 1000);
    SetEndTime(GetBeginTime());
  }
  SetBeginTimeStamp(time_stamp);
  m_block.m_time_stamp = time_stamp;
  m_index.Last().m_time_stamp = time_stamp;
  m_block_bytes = 0;
  SetLength(static_cast<DWORD>(AppendOffset()));
}

void CZebFile::StartBlock(DWORD time_stamp, DWORD index_time_stamp) {
  const DWORD offset = m_index.Last().m_offset;
  const auto next = static_cast<DWORD>(AppendOffset());
  m_index.Add({next, 0, index_time_stamp});  // before the disk is touched: it may lack memory
  m_block.m_next = next;
  WriteBlockHeader(offset, m_block);
  m_block = {offset, kNoBlock, 0, time_stamp};
  m_block_bytes = 0;
  WriteBlockHeader(next, m_block);
  SetLength(static_cast<DWORD>(AppendOffset()));
}

int CZebFile::WriteBlock(CObList* blocks) {
  if (m_block.m_frames > 0 || blocks == nullptr || blocks->IsEmpty()) return 0;
  const auto as_block = [](CObject* object) { return dynamic_cast<CFrameBlock*>(object); };
  CFrameBlock* first = as_block(blocks->GetHead());
  if (first == nullptr || first->GetFrameNum() == 0) return 0;
  if (m_file == nullptr || m_mode != kZebFileWrite) return 0;
  if (!m_file->IsOpen() && !Reopen(CFile::kModeWrite)) return 0;

  SetBeginTime(first->GetBeginTime());
  SetEndTime(first->GetEndTime());
  SetBeginTimeStamp(first->GetTimeStamp());
  bool fits = true;
  for (CObject* object : *blocks) {
    CFrameBlock* block = as_block(object);
    if (block == nullptr || block->GetFrameNum() == 0) break;
    fits = Fits(kBlockHeaderBytes + block->GetDataLength());
    if (!fits) break;
    const Undo undo(*this);
    try {
      if (block != first) {
        // On purpose: index entries made here keep the stamp of the file's first one, while the
        // block headers on disk carry the blocks' own.
        StartBlock(block->GetTimeStamp(), m_index[0].m_time_stamp);
        SetEndTime(block->GetEndTime());
      }
      AppendPrepared(*block);
    } catch (...) {
      undo.Restore();
      throw;
    }
  }
  WriteHeader();
  SetLength(static_cast<DWORD>(m_file->GetLength()));
  return fits ? 1 : 0;
}

void CZebFile::AppendPrepared(CFrameBlock& block) {
  m_total_frames += block.GetFrameNum();
  m_block.m_frames = static_cast<WORD>(block.GetFrameNum());
  m_index.Last().m_frames = m_block.m_frames;
  CFile& stream = *block.GetStream();
  stream.SeekToBegin();
  m_file->Seek(AppendOffset());
  // What the stream does not hold is not counted, so that the chain stays whole.
  const ULONGLONG copied = FileCopier().Copy(stream, *m_file, block.GetDataLength());
  m_block_bytes = static_cast<DWORD>(copied);
  stream.Seek(block.GetDataLength());
}

ULONGLONG CZebFile::AppendOffset() const {
  return ULONGLONG{m_index.Last().m_offset} + kBlockHeaderBytes + m_block_bytes;
}

void CZebFile::WriteBlockHeader(ULONGLONG offset, const BlockHeader& header) {
  m_file->Seek(offset);
  m_file->Write(header.Format());
}

void CZebFile::WriteHeader() {
  m_file->SeekToBegin();
  WriteTo(*m_file);
}

void CZebFile::DropPartialFrame() noexcept {
  try {
    if (m_file->IsOpen()) m_file->SetLength(AppendOffset());
  } catch (const std::exception&) {
    // The disk is failing anyway; Flush writes over what is left there.
  }
}

void CZebFile::Flush() {
  if (m_total_frames == 0) {
    if (m_file->IsOpen()) m_file->Close();
    os::DeleteFile(GetFileName());
    return;
  }
  if (!m_file->IsOpen() && !Reopen(CFile::kModeReadWrite)) return;
  const ULONGLONG end = AppendOffset();
  if (m_block_bytes > 0) {
    WriteHeader();
    const DWORD offset = m_index.Last().m_offset;
    m_block.m_next = static_cast<DWORD>(end);
    WriteBlockHeader(offset, m_block);
    m_block = {offset, kNoBlock, 0, os::GetTickCount()};
  }
  WriteBlockHeader(end, m_block);
  m_file->Close();
}
