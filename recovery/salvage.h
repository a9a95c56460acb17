// Making a whole recording of one whose writer died or which is damaged. docs/recovery.md tells
// how.
#pragma once

#include <vector>

#include "platform/framework/export.h"
#include "recovery/frame_finder.h"
#include "recovery/progress.h"

class CFile;

namespace zebx {

// What had to be replaced in a recording's header.
enum class HeaderRemark {
  kDamaged,            // no magic: whatever makes sense was kept
  kNamesDamaged,       // of camera, board and host; those behind the damage are empty now
  kFrameSizeReplaced,  // by kSalvagedFrameSize
};
inline constexpr BYTE kSalvagedFrameSize = 130;

// A frame that was saved with a header other than that in the damaged file.
struct RestoredFrame {
  enum class What {
    kHeader,     // one bit of type, flags or lengths was damaged
    kTimeStamp,  // it did not fit those of the frames around it
  };
  ULONGLONG offset;  // in the damaged file
  What what;
};

struct SalvagedFile {
  CString path;  // while not finished, of a temporary file
  bool finished = false;
  ULONGLONG frames = 0;
  int blocks = 0;  // with frames
  ULONGLONG bytes = 0;
};

struct SalvageReport {
  enum class Result {
    kSaved,          // every file is finished
    kNothingToSave,  // no I-frame is intact; no file was made
    kCancelled,      // no file was left
    kExists,         // a file is in the way; nothing was made in its place
    kNotWritten,     // the disk is full or failing; files that are not finished stay as far as they
                     // came, under their temporary names
  };

  Result result = Result::kNothingToSave;
  CString failure;  // of kExists and kNotWritten: one line that names the file
  // In order. More than one when the frames do not fit into one, or when the stamps step back for
  // good: the second is called "..._2.zebz".
  std::vector<SalvagedFile> files;
  ULONGLONG damaged_bytes = 0;  // length of the damaged file
  ULONGLONG frames = 0;
  ULONGLONG frame_bytes = 0;
  ULONGLONG lost_frames = 0;  // intact, but ahead of the first I-frame of a file
  ULONGLONG lost_frame_bytes = 0;
  // The first kMostDetails of each, and how many there are.
  std::vector<Hole> holes;
  ULONGLONG hole_count = 0;
  ULONGLONG hole_bytes = 0;
  std::vector<RestoredFrame> restored;
  ULONGLONG restored_count = 0;
  std::vector<HeaderRemark> header_remarks;

  static constexpr std::size_t kMostDetails = 100;
};

// Saves every frame that FrameFinder finds in `damaged`, open for reading and never changed, into a
// new recording at `output`, in order, with its time stamp. What is written passes CheckRecording.
// The recording is written under a temporary name beside `output` and takes that name when it is
// whole; an existing file there is left alone, or replaced at that moment when `replace`. Neither
// takes the clock: other threads may record meanwhile. Throws CFileException when `damaged` cannot
// be read, std::bad_alloc.
ZEBX_API SalvageReport SalvageRecording(CFile& damaged, const CString& output, bool replace = false,
                                        const ProgressCallback& progress = {});
// The same for the file at a path.
ZEBX_API SalvageReport SalvageRecording(const CString& damaged, const CString& output,
                                        bool replace = false,
                                        const ProgressCallback& progress = {});

}  // namespace zebx
