// The raw bytes of a recording, looked at for frame and block headers at any offset.
#pragma once

#include <optional>
#include <vector>

#include "record/block_format.h"
#include "record/frame_format.h"
#include "recovery/progress.h"

class CFile;

namespace zebx {

// A stretch of the file in memory that follows the offsets asked for. Borrows the file.
class ByteWindow {
 public:
  ByteWindow(CFile& file, std::size_t bytes) : m_file(file), m_buffer(bytes) {}

  bool Holds(ULONGLONG offset, std::size_t count) const {
    return offset >= m_start && offset + count <= m_start + m_filled;
  }
  // `count` bytes at `offset`, fewer at the end of the file; valid until the next call. `count` is
  // at most the window's size.
  std::span<const BYTE> At(ULONGLONG offset, std::size_t count);

 private:
  CFile& m_file;
  std::vector<BYTE> m_buffer;
  ULONGLONG m_start = 0;
  std::size_t m_filled = 0;
};

class RecordingBytes {
 public:
  // Borrows both.
  RecordingBytes(CFile& file, ProgressMeter& progress);

  // As it was at the start: a recording may still grow.
  ULONGLONG Length() const { return m_length; }

  // The header at `offset`, whatever it says; nothing when the file ends first.
  std::optional<BlockHeader> BlockAt(ULONGLONG offset);
  std::optional<FrameHeader> AnyFrameAt(ULONGLONG offset);
  // The frame header at `offset` when it has the signs of one.
  std::optional<FrameHeader> FrameAt(ULONGLONG offset);
  // The frame headers that differ from the bytes at `offset` in one bit outside the time stamp.
  std::vector<FrameHeader> NearFramesAt(ULONGLONG offset);

  // Whether a block header stands at `offset`, which no chain is trusted to lead to. `previous` is
  // the block before it, kNoBlock when that is not known.
  bool IsBlock(ULONGLONG offset, DWORD previous);
  // Whether one does where the chain leads from the block `previous`. A single damaged field does
  // not count against it.
  bool IsBlockOfChain(ULONGLONG offset, DWORD previous);
  // Whether exactly `frames` frames fill the file from `offset` to `end`.
  bool IsFilledByFrames(ULONGLONG offset, DWORD frames, ULONGLONG end);

  // The first offset from `offset` on where a block or a run of frames begins; `limit` if none. The
  // run goes on to `limit`, a block header, the place where the file is cut off, or for long
  // enough, and its stamps fit `last_stamp` or at least each other. Reads every byte once, and for
  // each a few headers further on at most.
  ULONGLONG FindSync(ULONGLONG offset, ULONGLONG limit, std::optional<DWORD> last_stamp);
  // The first block header from `offset` on that the chain confirms: the next block points back at
  // it, or it points back at `previous`, which leads there or is open. Length() if none.
  ULONGLONG FindChainedBlock(ULONGLONG offset, DWORD previous);
  // The first offset from `begin` to `end` where frames begin that fit `stamp` and that lead, one
  // behind the other, to something beyond `end`; `end` if none.
  ULONGLONG FindRunAcross(ULONGLONG begin, ULONGLONG end, ULONGLONG limit, DWORD stamp);
  // Whether frames lead, one behind the other, from `offset` to `end` exactly; with `ahead`, the
  // frame before them, each follows the other in time as well.
  bool LeadTo(ULONGLONG offset, ULONGLONG end, std::optional<FrameHeader> ahead);
  // Whether frames lead, each later than the other and of its kind, from `offset`, behind `ahead`,
  // to `limit` or a block header exactly, or are too many to be an accident.
  bool LeadOn(ULONGLONG offset, ULONGLONG limit, FrameHeader ahead);

 private:
  std::span<const BYTE> Bytes(ULONGLONG offset, std::size_t count);
  bool IsFrameRun(ULONGLONG offset, ULONGLONG limit, std::optional<DWORD> last_stamp);
  bool LeadsAcross(ULONGLONG offset, ULONGLONG end, ULONGLONG limit, DWORD stamp);
  bool StartsWithFrameOf(ULONGLONG block_offset, const BlockHeader& header);
  bool IsNextOf(DWORD previous, ULONGLONG offset, const BlockHeader& header);
  bool IsPointedBackAt(ULONGLONG offset, const BlockHeader& header);
  // False when the work is cancelled. Cheap enough to be asked at every byte.
  bool Pass(ULONGLONG offset) { return offset % 4096 != 0 || m_progress.Pass(offset, m_length); }

  ULONGLONG m_length;
  ProgressMeter& m_progress;
  ByteWindow m_near;  // moves along with the search
  ByteWindow m_far;   // jumps from header to header
};

}  // namespace zebx
