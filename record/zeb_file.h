// A recording file on disk: the header, the chain of blocks, and the block index in memory. One
// class with three faces: writer, reader, clip.
#pragma once

#include <memory>
#include <optional>

#include "platform/framework/export.h"
#include "record/block_format.h"
#include "record/block_index.h"
#include "record/zeb_file_info.h"

class CFile;
class CFrameBlock;
class CObList;
class CZebFrameData;

enum tag_ZEBFILEMODE : DWORD {
  kZebFileWrite = 0,  // create a file and write it
  kZebFileRead = 1,   // open a file and read it
};

namespace zebx {

// Results of the frame writers.
enum : int {
  kFrameWritten = 1,
  kFrameDropped = 0,     // the block is empty and the frame is not an I-frame
  kWriteNoFile = -1,     // no file, no frame, a frame without its bytes, or the file is gone
  kWriteFileError = -2,  // the disk is full or failing
  kWriteNoMemory = -3,
  kWriteFileFull = -4,  // go on in a new file
};

}  // namespace zebx

// States: detached -> (Open write) created, empty -> (first frame) writing -> (Close) detached,
// with a finished file; detached -> (Open read) reading -> (Close) detached. The base class's
// fields are the file's header. No locks: callers serialise their calls on one object.
class ZEBX_API CZebFile : public CZebFileInfo {
 public:
  CZebFile();
  // Closes; an error of the disk is reported.
  ~CZebFile() override;
  CZebFile(const CZebFile&) = delete;
  CZebFile& operator=(const CZebFile&) = delete;

  // Write: creates (or empties) the file that info names, with info as its header. Read: opens the
  // file that info names, also one that is still being written or whose writer died, builds the
  // block index and copies the header into *info. 1, or 0 with nothing attached: a file is attached
  // already, no info, another mode, a file that cannot be opened or made, a header that is not
  // valid, or no frame in any finished block. A file that the disk refuses to hold is gone again,
  // unless one was there before. Disk errors are reported.
  int Open(CZebFileInfo* info, tag_ZEBFILEMODE mode);
  // Finishes a file being written, or deletes it when it received no frame, and releases
  // everything. Safe when nothing is attached. Throws CFileException when the disk refuses the last
  // bytes; the object is released all the same, and everything up to the last finished block is
  // readable.
  void Close();

  // Appends a frame: one system call, but for a frame that starts a block. Every block starts with
  // an I-frame. Result codes above; a frame that is not written changes nothing, but for an I-frame
  // refused where one block ends and the next begins: frames are dropped until the next I-frame.
  int WriteOneFrame(CZebFrameData* frame);
  // The same for a frame from before the alarm: begin time, begin time stamp and end time move back
  // to the first such frame, and the time of day is never read.
  int WritePreAlarmFrame(CZebFrameData* frame);
  // Appends prepared blocks, a list of CFrameBlock, up to the first one without frames. Only into a
  // file whose current block is empty. 1, or 0 with nothing written; 0 also when a block has more
  // than 65,535 frames or would lead beyond what 32-bit offsets reach, the blocks before it
  // written. Throws CFileException, with the blocks before the refused one written.
  int WriteBlock(CObList* blocks);
  // 1 while the writer accepts nothing but an I-frame.
  int IsNextIFrame() const { return m_block.m_frames == 0 ? 1 : 0; }

  // Reads a frame into `frame`, whose buffers must hold it: with block < 0 the next one, otherwise
  // frame `index` of `block`. An index past the end of a block means the first frame of the next
  // block that has any. 1, or 0 at the end, for a position that does not exist, when nothing is
  // open for reading, and for a disk error, which is reported. A frame that is damaged on disk, or
  // that does not fit the buffers, still answers 1, with the lengths at 0.
  int ReadOneFrame(CZebFrameData* frame, int block, int index);
  // Where reading goes on, 0 as the result at the end; or the last frame written, always 1.
  int GetFilePos(int& block, int& index) const;

  // Frames of a block; 0 for a block that does not exist.
  int GetFrameNumOfBlock(int block) const override;
  int GetTotalBlock() const override { return m_index.Count(); }
  int GetTotalFrame() const override { return static_cast<int>(m_total_frames); }
  // The number of a frame, counted from the start of the file. A derived class is asked by
  // GetFrameNumOfBlock for every block before it, whether it exists or not; this one keeps sums.
  int GetFrameIndex(int block, int index) const override;
  int GetFrameIndexOfBlock(int block) const override;
  // When a block begins: to the second, 0 for a block that does not exist.
  virtual CTime GetBlockTime(int block) const;
  // The time stamp of a block's first frame; 0xFFFFFFFF for a block that does not exist.
  DWORD GetBlockTimeStamp(int block) const;

  // Cuts blocks from_block to to_block - 1 whole and the first to_index frames of to_block out into
  // a new recording at `path`, which is created or emptied. 1, or 0 with no file made when there is
  // nothing to copy, nothing is open for reading, the file cannot be made or is this file itself;
  // 0 with a partial file when this file ends early. Throws CFileException when the disk refuses a
  // byte, without a file unless one was there before.
  int ClipFile(const CString& path, int from_block, int to_block, int to_index);
  // Copies the last `blocks` blocks of this file, which may still be recording, into `target`, an
  // alarm file just created. 1, or 0 when there is nothing to copy or no place to copy it to.
  // Throws CFileException.
  int AlarmPreviewData(CZebFile* target, DWORD blocks);

  // A file that has reached this length takes no more frames.
  static constexpr DWORD kMaxFileBytes = 0x7F000000;

 private:
  enum class FrameSource { kLive, kPreAlarm };
  class Undo;

  // Opening, closing and queries: zeb_file.cpp.
  void Detach();
  bool Reopen(UINT access);
  bool IsKnownBlock(int block) const;
  // Of a block that is in the index.
  DWORD FramesOf(int block) const;

  // Writing: zeb_file_writer.cpp.
  int Create(CZebFileInfo* info);
  int AppendFrame(const CZebFrameData* frame, FrameSource source);
  void Append(const CZebFrameData& frame, FrameSource source);
  bool Fits(ULONGLONG bytes) const;
  bool IsFull(const CZebFrameData& frame) const;
  bool StartsBlock(const CZebFrameData& frame) const;
  void BeginFile(DWORD time_stamp, std::optional<CTime> now);
  bool IsBlockBegun() const;
  void StartBlock(DWORD time_stamp, DWORD index_time_stamp);
  void FinishBlock(zebx::BlockHeader block);
  void FinishBlock();
  void AppendPrepared(CFrameBlock& block);
  ULONGLONG AppendOffset() const;
  void WriteBlockHeader(ULONGLONG offset, const zebx::BlockHeader& header);
  void WriteHeader();
  void DropPartialFrame() noexcept;
  void Flush();

  // Reading: zeb_file_reader.cpp.
  int OpenForReading(CZebFileInfo* info);
  bool LoadIndex();
  int ReadNext(CZebFrameData& frame);
  int ReadAt(CZebFrameData& frame, int block, int index);
  int ReadHere(CZebFrameData& frame, int block, int index);
  bool HasFrameFrom(int block, int index) const;
  zebx::BlockHeader ReadBlockHeader(int block);

  // Clipping: zeb_file_clip.cpp.
  bool CutInto(CFile& clip, int from_block, int to_block, int to_index);
  bool CopyBlocks(CFile& clip, int from_block, int to_block, int to_index, DWORD& last_stamp);
  int FirstPreviewBlock(DWORD blocks) const;
  void CopyBlockTo(CZebFile& target, int block, CTime begin_time, CZebFrameData& frame);

  tag_ZEBFILEMODE m_mode = kZebFileRead;
  // Null when detached; closed between Open and the first frame. Every access seeks first, so its
  // position means nothing between operations.
  std::unique_ptr<CFile> m_file;
  zebx::BlockHeader m_block;  // being written, or the first of the file when reading
  DWORD m_block_bytes = 0;    // of frames in the block being written
  // The final header of the block before the current one, until the disk has taken it.
  std::optional<zebx::BlockHeader> m_unfinished;
  DWORD m_total_frames = 0;
  zebx::BlockIndex m_index;
  ULONGLONG m_read_position = 0;  // file offset of the next frame to read
  int m_read_block = 0;
  int m_read_frame = 0;
  // I-frames in the current block, counted for RT8Port boards only. Outlives Open and Close.
  DWORD m_i_frames = 0;
};
