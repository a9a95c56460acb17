// Writing frames that already have their time stamps into recordings, as if they were captured now.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/os/clock.h"
#include "record/zeb_file.h"

class CZebFrameData;

namespace zebtool {

struct WrittenFile {
  std::string path;
  ULONGLONG frames = 0;
  int blocks = 0;  // with frames
  ULONGLONG bytes = 0;
};

// Steps the library's clock to every frame's stamp, so that begin and end times follow the stamps
// and not the time that the writing takes. A recording that has reached its largest length goes on
// in a file with "_2", "_3" ... before its extension. One at a time: there is one clock.
class RecordingWriter {
 public:
  // `header` describes the camera; the first frame is stamped `first_stamp` and taken at `begin`.
  // Throws JobError when the file cannot be made.
  RecordingWriter(const CZebFileInfo& header, const std::string& path, CTime begin,
                  DWORD first_stamp);
  ~RecordingWriter();
  RecordingWriter(const RecordingWriter&) = delete;
  RecordingWriter& operator=(const RecordingWriter&) = delete;

  // Hours between local and universal time, where they are not this machine's.
  void SetGmt(int gmt) { m_gmt = gmt; }

  // Appends the frame. False when it has to be an I-frame and is none: at the very beginning, and
  // when a further file begins with it. Throws JobError when it cannot be written; what was written
  // before stays, and is finished by the destructor as well as the disk allows.
  bool Append(CZebFrameData& frame);
  // Finishes the last file. Throws JobError.
  void Finish();

  // The files in order, the one in work last; complete after Finish.
  const std::vector<WrittenFile>& Files() const { return m_files; }

 private:
  void OpenFile(const std::string& path);
  void CloseFile();
  void StepClock(DWORD time_stamp);
  std::string FurtherPath() const;

  CZebFileInfo m_header;
  std::string m_path;
  DWORD m_last_stamp;
  LONGLONG m_elapsed_ms = 0;
  std::optional<int> m_gmt;
  os::SteppedClock m_clock;
  std::unique_ptr<CZebFile> m_file;
  std::vector<WrittenFile> m_files;
};

}  // namespace zebtool
