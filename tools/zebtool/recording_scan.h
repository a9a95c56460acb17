// A structural walk over a recording: header, chain, blocks and frame headers, against everything
// that a whole recording keeps. Frame data is passed over, memory does not depend on the length.
#pragma once

#include <string>

#include "record/block_format.h"
#include "record/frame_format.h"
#include "record/zeb_file_info.h"

class CFile;

namespace zebtool {

struct Finding {
  enum class Kind {
    kNote,        // unusual, but something the library itself makes
    kUnfinished,  // the writer died, or is still writing
    kDamage,
  };
  Kind kind;
  ULONGLONG offset;  // in the file
  std::string text;
};

struct ScannedBlock {
  int number;
  ULONGLONG offset;  // of the block header
  zebx::BlockHeader header;
};

struct ScannedFrame {
  int block;
  int index;
  ULONGLONG offset;
  zebx::FrameHeader header;
  bool finished;  // in a block that its writer closed
};

// Is called in the order of the file. A block's call comes before those of its frames; a finding's
// after those of what it is about.
class ScanVisitor {
 public:
  virtual ~ScanVisitor() = default;
  virtual void OnHeader(const CZebFileInfo&) {}
  virtual void OnBlock(const ScannedBlock&) {}
  virtual void OnFrame(const ScannedFrame&) {}
  virtual void OnFinding(const Finding&) {}
};

struct ScanSummary {
  bool has_header = false;  // the header is readable; everything below is 0 when it is not
  ULONGLONG file_bytes = 0;
  int blocks = 0;  // block headers in the chain, an empty one at its end included
  int blocks_with_frames = 0;
  ULONGLONG frames = 0;           // all that the walk met
  ULONGLONG finished_frames = 0;  // of them, in closed blocks: what the library reads
  ULONGLONG i_frames = 0;
  ULONGLONG voiced_frames = 0;
  ULONGLONG lost_frames = 0;  // flagged as without a signal
  ULONGLONG video_bytes = 0;
  ULONGLONG speech_bytes = 0;
  DWORD first_stamp = 0;
  DWORD last_stamp = 0;
  ULONGLONG notes = 0;
  ULONGLONG damages = 0;
  bool unfinished = false;

  bool IsWhole() const { return has_header && damages == 0 && !unfinished; }
  DWORD DurationMs() const { return last_stamp - first_stamp; }
};

// Walks the file. Throws CFileException; a file that is no recording is a finding.
ScanSummary ScanRecording(CFile& file, ScanVisitor& visitor);

}  // namespace zebtool
