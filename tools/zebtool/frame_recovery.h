// Finding every frame that is intact on disk, whatever became of the chain around it.
#pragma once

#include <functional>
#include <optional>

#include "tools/zebtool/recording_bytes.h"

namespace zebtool {

struct RecoveredFrame {
  ULONGLONG offset;
  zebx::FrameHeader header;
};

// Bytes that belong to no intact frame and to no block header.
struct Hole {
  ULONGLONG begin;
  ULONGLONG end;
};

// Goes through the file once, in order. A block whose frames fill it exactly is taken as it is. In
// any other block, and behind the last one, frames are taken one after the other by their signs;
// where these end, the search goes on at the next place where frames or a block begin.
class FrameRecovery {
 public:
  using HoleSink = std::function<void(const Hole&)>;

  // Starts at `offset`, where the first block header stands when `at_block`. Borrows the bytes.
  FrameRecovery(RecordingBytes& bytes, ULONGLONG offset, bool at_block, HoleSink on_hole);

  // The next intact frame; nothing at the end. Holes before it are reported first.
  std::optional<RecoveredFrame> Next();

 private:
  void EnterBlock();
  std::optional<RecoveredFrame> TakeTrustedFrame();
  std::optional<RecoveredFrame> TakeFrameBySigns();
  bool SomethingBegins(ULONGLONG offset);
  bool IsOutOfTime(DWORD time_stamp, ULONGLONG end);
  void SkipTo(ULONGLONG offset);

  RecordingBytes& m_bytes;
  HoleSink m_on_hole;
  ULONGLONG m_position;
  ULONGLONG m_limit;               // where the next block header stands, as far as that is certain
  ULONGLONG m_known_sync = 0;      // where a search that went ahead of m_position has ended
  DWORD m_block = zebx::kNoBlock;  // the block that m_position is in
  std::optional<DWORD> m_last_stamp;
  DWORD m_trusted_frames = 0;  // frames that fill the rest of the block
};

}  // namespace zebtool
