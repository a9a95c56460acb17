// Finding every frame that is intact on disk, whatever became of the chain around it.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/framework/export.h"
#include "record/frame_format.h"
#include "recovery/progress.h"

class CFile;

namespace zebx {

struct FoundFrame {
  ULONGLONG offset;    // of the frame in the file
  FrameHeader header;  // as it should be; its bytes follow at offset + header.HeaderBytes()
  bool is_restored;    // one bit of the header in the file is another
  // Of the block header, for the first frame of a block.
  std::optional<DWORD> block_stamp;
};

// Bytes that belong to no intact frame and to no block header.
struct Hole {
  ULONGLONG begin;
  ULONGLONG end;
};

// Goes through a file once, in order. A block whose frames fill it exactly is taken as it is. In
// any other block, and behind the last one, frames are taken one after the other by their signs.
// What follows a frame header up to its length is that frame's: nothing is looked for in there,
// but where the file shows that the length is damaged. A frame header in which one bit is damaged
// is restored when the file goes on where it then says. Behind damage the search goes on at the
// next place where frames or a block begin. Memory does not depend on the length of the file.
class ZEBX_API FrameFinder {
 public:
  using HoleSink = std::function<void(const Hole&)>;

  // Starts behind the file's header, or wherever the first block or frames are recognised. Borrows
  // the file, which is open for reading. Throws CFileException, as Next does.
  FrameFinder(CFile& file, HoleSink on_hole, const ProgressCallback& progress = {});
  // Starts at `offset`, where the first block header stands when `at_block`.
  FrameFinder(CFile& file, HoleSink on_hole, const ProgressCallback& progress, ULONGLONG offset,
              bool at_block);
  ~FrameFinder();
  FrameFinder(const FrameFinder&) = delete;
  FrameFinder& operator=(const FrameFinder&) = delete;

  // The next intact frame; nothing at the end, or when the callback has cancelled. Holes before it
  // are reported first. Time stamps are as they stand in the file: they may be damaged.
  std::optional<FoundFrame> Next();

 private:
  class Walk;
  std::unique_ptr<Walk> m_walk;
};

}  // namespace zebx
