// The writing side of CZebFile: creating a file, appending frames and prepared blocks, finishing.
#include <array>
#include <exception>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "platform/framework/byte_order.h"
#include "platform/framework/file_system.h"
#include "platform/framework/mem_file.h"
#include "platform/os/clock.h"
#include "record/file_copy.h"
#include "record/file_stub.h"
#include "record/frame_block.h"
#include "record/header_format.h"
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

// What is reserved at a time, so that recordings written side by side lie in few pieces. Only from
// the second block on: a short clip needs none.
constexpr ULONGLONG kReserveBytes = 16 * 1024 * 1024;

}  // namespace

// What a frame changes in memory, to be put back when the disk refuses it: the file then goes on,
// or is finished, as if the frame had never been offered. A block that was begun for it stays when
// the disk may know of it already; it then waits for the next I-frame.
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
    const bool block_stays = m_file.m_index.Count() > m_blocks && m_file.m_unfinished;
    if (!block_stays) {
      m_file.m_block = m_block;
      m_file.m_block_bytes = m_block_bytes;
      m_file.m_i_frames = m_i_frames;
      while (m_file.m_index.Count() > m_blocks) m_file.m_index.RemoveLast();
      m_file.m_index.Last() = m_last_entry;
    }
    m_file.m_total_frames = m_total_frames;
    m_file.SetFlags(m_flags);
    m_file.SetBeginTimeKeepingGmt(m_begin_time);
    m_file.SetEndTime(m_end_time);
    m_file.SetBeginTimeStamp(m_begin_time_stamp);
    m_file.SetGmt(m_gmt);
    m_file.SetLength(block_stays ? static_cast<DWORD>(m_file.AppendOffset()) : m_length);
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
  try {
    m_block = {kNoBlock, kNoBlock, 0, os::GetTickCount()};
    m_block_bytes = 0;
    m_index.Start();
    m_index.Add({GetSize(), 0, 0});
    WriteHeader();
    WriteBlockHeader(m_index[0].m_offset, m_block);
    m_file->Close();  // until the first frame, so that many prepared files cost no handles
  } catch (...) {
    DeleteIfNew(*m_file);
    throw;
  }
  m_mode = kZebFileWrite;
  m_total_frames = 0;
  m_unfinished.reset();
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
    FinishBlock();
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
    if (frame.IsIFrame() && !IsBlockBegun()) ++m_i_frames;
  }
  const DWORD time_stamp = frame.GetTimeStamp();
  // Read once, so that a file's times cannot straddle a second; never for frames of the past.
  const auto now =
      source == FrameSource::kLive ? std::optional(CTime::GetCurrentTime()) : std::nullopt;
  const BlockHeader before = m_block;
  const bool starts_block = StartsBlock(frame);
  if (starts_block) {
    if (counts_i_frames) m_i_frames = 0;
    StartBlock(time_stamp, time_stamp);
  } else if (IsBlockBegun()) {
    m_block.m_time_stamp = m_index.Last().m_time_stamp = time_stamp;
  } else if (m_block.m_frames == 0) {
    BeginFile(time_stamp, now);
  }
  DWORD bytes = 0;
  if (IsBlockBegun()) {
    m_file->Seek(m_index.Last().m_offset);
    bytes = frame.WriteTo(*m_file, m_block.Format());
    if (starts_block) FinishBlock(before);
    SetLength(static_cast<DWORD>(AppendOffset()));
  } else {
    m_file->Seek(AppendOffset());
    bytes = frame.WriteTo(*m_file);
  }

  ++m_total_frames;
  if (now) SetEndTime(*now);
  ++m_block.m_frames;
  m_block_bytes += bytes;
  SetLength(GetLength() + bytes);
}

// True for a block that has its header and no frame yet, behind others: a frame that comes first in
// a block was refused after the block was begun.
bool CZebFile::IsBlockBegun() const {
  return m_block.m_frames == 0 && m_block.m_previous != kNoBlock;
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

// In memory alone.
void CZebFile::StartBlock(DWORD time_stamp, DWORD index_time_stamp) {
  const DWORD offset = m_index.Last().m_offset;
  m_index.Add({static_cast<DWORD>(AppendOffset()), m_total_frames, index_time_stamp});
  m_block = {offset, kNoBlock, 0, time_stamp};
  m_block_bytes = 0;
}

// Writes down that the block before the current one is finished, and the header. Only once the
// current block has its header on disk: the chain never leads to anything else, whatever the disk
// refuses and wherever the power is cut.
void CZebFile::FinishBlock(BlockHeader block) {
  block.m_next = m_index.Last().m_offset;
  m_unfinished = block;
  FinishBlock();
  m_file->ReserveAhead(kReserveBytes);
}

// A write that is refused half-way cannot be taken back for certain, so the block before stays
// unfinished until it goes through, and nothing is appended meanwhile.
void CZebFile::FinishBlock() {
  if (!m_unfinished) return;
  WriteBlockHeader(m_block.m_previous, *m_unfinished);
  WriteHeader();
  m_unfinished.reset();
}

int CZebFile::WriteBlock(CObList* blocks) {
  if (m_block.m_frames > 0 || blocks == nullptr || blocks->IsEmpty()) return 0;
  const auto as_block = [](CObject* object) { return dynamic_cast<CFrameBlock*>(object); };
  CFrameBlock* first = as_block(blocks->GetHead());
  if (first == nullptr || first->GetFrameNum() == 0) return 0;
  if (m_file == nullptr || m_mode != kZebFileWrite) return 0;
  if (!m_file->IsOpen() && !Reopen(CFile::kModeReadWrite)) return 0;

  FinishBlock();
  bool fits = true;
  for (CObject* object : *blocks) {
    CFrameBlock* block = as_block(object);
    if (block == nullptr || block->GetFrameNum() == 0) break;
    fits = block->GetFrameNum() <= kMaxFramesOfBlock &&
           Fits(kBlockHeaderBytes + block->GetDataLength());
    if (!fits) break;
    const Undo undo(*this);
    try {
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
  const BlockHeader before = m_block;
  const bool starts_block = m_block.m_frames > 0;
  // On purpose: index entries made here keep the stamp of the file's first one, while the block
  // headers on disk carry the blocks' own.
  if (starts_block) StartBlock(block.GetTimeStamp(), m_index[0].m_time_stamp);
  if (IsBlockBegun()) {
    m_block.m_time_stamp = block.GetTimeStamp();
    WriteBlockHeader(m_index.Last().m_offset, m_block);
  }
  CFile& stream = *block.GetStream();
  stream.SeekToBegin();
  m_file->Seek(AppendOffset());
  // What the stream does not hold is not counted, so that the chain stays whole.
  const ULONGLONG copied = FileCopier().Copy(stream, *m_file, block.GetDataLength());
  stream.Seek(block.GetDataLength());
  if (starts_block) FinishBlock(before);

  if (m_total_frames == 0) {
    SetBeginTime(block.GetBeginTime());
    SetBeginTimeStamp(block.GetTimeStamp());
  }
  SetEndTime(block.GetEndTime());
  m_total_frames += block.GetFrameNum();
  m_block.m_frames = static_cast<WORD>(block.GetFrameNum());
  m_block_bytes = static_cast<DWORD>(copied);
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
  if (GetSize() == m_index[0].m_offset) {
    WriteTo(*m_file);
    return;
  }
  // The first block stands where the names ended at creation, so those names stay, and what stands
  // before them is written alone.
  CMemFile header;
  CZebFileInfo(static_cast<const CZebFileInfo&>(*this)).WriteTo(header);
  std::array<BYTE, RecordingHeader::kNamesAt> fields;
  header.SeekToBegin();
  header.Read(fields);
  ByteWriter(std::span(fields).subspan(RecordingHeader::kSizeAt)).Put(m_index[0].m_offset);
  m_file->Write(fields);
}

void CZebFile::DropPartialFrame() noexcept {
  try {
    if (m_file->IsOpen()) m_file->SetLength(AppendOffset());
  } catch (const std::exception&) {
    // The disk is failing anyway; what comes next is written over what is left there.
  }
}

void CZebFile::Flush() {
  if (m_total_frames == 0) {
    if (m_file->IsOpen()) m_file->Close();
    // The one that was made, whatever the header has been told since.
    CurrentFileSystem().DeleteFile(m_file->GetFilePath(), nullptr);
    return;
  }
  if (!m_file->IsOpen() && !Reopen(CFile::kModeReadWrite)) return;
  FinishBlock();
  const DWORD offset = m_index.Last().m_offset;
  const bool is_last = m_block_bytes == 0;  // the block is begun and waits for a frame
  const auto end = static_cast<DWORD>(is_last ? offset : AppendOffset());
  // The terminating block first: what ends the last one then leads to it and to nothing else. A
  // disk too full for it still takes the end of the last block, which may be that of the file.
  std::exception_ptr refused;
  try {
    WriteBlockHeader(end, {is_last ? m_block.m_previous : offset, kNoBlock, 0, os::GetTickCount()});
    if (m_file->GetLength() > end + kBlockHeaderBytes) m_file->SetLength(end + kBlockHeaderBytes);
  } catch (const CFileException&) {
    m_file->SetLength(end);
    refused = std::current_exception();
  }
  if (!is_last) {
    m_block.m_next = end;
    WriteBlockHeader(offset, m_block);
  }
  WriteHeader();
  m_file->Close();
  if (refused) std::rethrow_exception(refused);
}
