// Checking a recording: header, chain, blocks and frame headers against everything that a whole
// one keeps. Frame data is passed over; memory does not depend on the length of the file.
#pragma once

#include <vector>

#include "platform/framework/export.h"
#include "record/block_format.h"
#include "record/frame_format.h"
#include "record/zeb_file_info.h"
#include "recovery/finding.h"
#include "recovery/progress.h"

class CFile;

namespace zebx {

struct CheckedBlock {
  int number;
  ULONGLONG offset;  // of the block header
  BlockHeader header;
};

struct CheckedFrame {
  int block;
  int index;
  ULONGLONG offset;
  FrameHeader header;
  bool finished;  // in a block that its writer closed
};

// Is called in the order of the file. A block's call comes before those of its frames; a finding's
// after those of what it is about.
class ZEBX_API CheckVisitor {
 public:
  virtual ~CheckVisitor();
  virtual void OnHeader(const CZebFileInfo& header);
  virtual void OnBlock(const CheckedBlock& block);
  virtual void OnFrame(const CheckedFrame& frame);
  virtual void OnFinding(const Finding& finding);
};

struct CheckSummary {
  bool cancelled = false;   // everything below is as far as the check came
  bool has_header = false;  // the header is readable; everything below is 0 when it is not
  ULONGLONG file_bytes = 0;
  int blocks = 0;  // block headers in the chain, an empty one at its end included
  int blocks_with_frames = 0;
  ULONGLONG frames = 0;           // all that the check met
  ULONGLONG finished_frames = 0;  // of them, in closed blocks: what CZebFile reads
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

  bool IsWhole() const { return has_header && damages == 0 && !unfinished && !cancelled; }
  DWORD DurationMs() const { return last_stamp - first_stamp; }
};

// Checks a file that is open for reading; it may still be in work. Throws CFileException; a file
// that is no recording is a finding.
ZEBX_API CheckSummary CheckRecording(CFile& file, CheckVisitor& visitor,
                                     const ProgressCallback& progress = {});

struct RecordingCheck {
  CheckSummary summary;
  std::vector<Finding> findings;    // the first kMostFindings
  ULONGLONG findings_left_out = 0;  // how many more there are

  static constexpr std::size_t kMostFindings = 100;
};

// The same for the file at `path`, with the findings collected.
ZEBX_API RecordingCheck CheckRecording(const CString& path, const ProgressCallback& progress = {});

}  // namespace zebx
