// The raw bytes of a recording, looked at for frame and block headers at any offset.
#pragma once

#include <optional>
#include <vector>

#include "record/block_format.h"
#include "record/frame_format.h"

class CFile;

namespace zebtool {

// A stretch of the file in memory that follows the offsets asked for. Borrows the file.
class ByteWindow {
 public:
  ByteWindow(CFile& file, std::size_t bytes) : m_file(file), m_buffer(bytes) {}

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
  explicit RecordingBytes(CFile& file);

  // As it was at the start: a recording may still grow.
  ULONGLONG Length() const { return m_length; }

  // The header at `offset`, whatever it says; nothing when the file ends first.
  std::optional<zebx::BlockHeader> BlockAt(ULONGLONG offset);
  std::optional<zebx::FrameHeader> AnyFrameAt(ULONGLONG offset);
  // The frame header at `offset` when it has the signs of one.
  std::optional<zebx::FrameHeader> FrameAt(ULONGLONG offset);

  // Whether a block header stands at `offset`, which no chain is trusted to lead to. `previous` is
  // the block before it, kNoBlock when that is not known.
  bool IsBlock(ULONGLONG offset, DWORD previous);
  // Whether a frame begins at `offset` and goes on, with frames behind it, up to `limit`, a block
  // header, the place where the file is cut off, or for long enough.
  bool IsFrameRun(ULONGLONG offset, ULONGLONG limit);
  // Whether exactly `frames` frames fill the file from `offset` to `end`.
  bool IsFilledByFrames(ULONGLONG offset, DWORD frames, ULONGLONG end);

  // The first offset from `offset` on where a block or a run of frames begins; `limit` if none.
  // Reads every byte once, and for each a few headers further on at most.
  ULONGLONG FindSync(ULONGLONG offset, ULONGLONG limit);

 private:
  bool StartsWithFrameOf(ULONGLONG block_offset, const zebx::BlockHeader& header);

  ULONGLONG m_length;
  ByteWindow m_near;  // moves along with the search
  ByteWindow m_far;   // jumps from header to header
};

}  // namespace zebtool
