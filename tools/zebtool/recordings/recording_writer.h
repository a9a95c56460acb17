// Writing frames that already have their time stamps into recordings, as if they were captured now.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/os/clock.h"
#include "record/zeb_file.h"
#include "tools/zebtool/files/output_file.h"
#include "tools/zebtool/recordings/written_files.h"

class CZebFrameData;

namespace zebtool {

// Where a writer's files come from and go to; one at a time.
class RecordingPlace {
 public:
  virtual ~RecordingPlace();

  // Creates file `number`, counted from 1, with `header`, which gets its path. Throws JobError.
  virtual std::unique_ptr<CZebFile> Create(CZebFileInfo& header, std::size_t number) = 0;
  // The file has a frame now, and stays whatever happens.
  virtual void Keep() {}
  // Finishes a file, `whole` when every frame could be written, and returns the path where it lies
  // then. One without a frame is gone. Throws CFileException and JobError.
  virtual std::string Close(std::unique_ptr<CZebFile> file, bool whole);
  // Asked before each frame, `elapsed_ms` after the first one: whether it begins a further file.
  virtual bool IsFileDue(ULONGLONG elapsed_ms);
};

// Steps the library's clock to every frame's stamp, so that begin and end times follow the stamps
// and not the time that the writing takes. A recording that has reached its largest length goes on
// in a further file. One at a time: there is one clock.
class RecordingWriter {
 public:
  // `header` describes the camera; the first frame is stamped `first_stamp` and taken at `begin`.
  // Throws JobError when the first file cannot be made.
  RecordingWriter(const CZebFileInfo& header, std::unique_ptr<RecordingPlace> place, CTime begin,
                  DWORD first_stamp);
  // The files are `path` and the same with "_2", "_3" ... before its extension, each one an
  // OutputFile that keeps its temporary name when it cannot be finished.
  RecordingWriter(const CZebFileInfo& header, const std::string& path, Existing existing,
                  CTime begin, DWORD first_stamp);
  ~RecordingWriter();
  RecordingWriter(const RecordingWriter&) = delete;
  RecordingWriter& operator=(const RecordingWriter&) = delete;

  // Hours between local and universal time, where they are not this machine's.
  void SetGmt(int gmt) { m_gmt = gmt; }

  // Appends the frame. False when it has to be an I-frame and is none: at the very beginning, and
  // when a further file begins with it. Throws JobError when it cannot be written; what was written
  // before stays, and is finished by Finish as well as the disk allows.
  bool Append(CZebFrameData& frame);
  // Finishes the last file; nothing may be appended afterwards. Throws JobError.
  void Finish();

  // The files in order, the one in work last; complete after Finish. A file that received no frame
  // is gone.
  const std::vector<WrittenFile>& Files() const { return m_files; }

 private:
  void OpenFile();
  void CloseFile();
  [[noreturn]] void FailAtWriting();
  void StepClock(DWORD time_stamp);
  ULONGLONG ElapsedMs() const {
    return static_cast<ULONGLONG>(std::max<LONGLONG>(m_elapsed_ms, 0));
  }

  CZebFileInfo m_header;
  std::unique_ptr<RecordingPlace> m_place;
  DWORD m_last_stamp;
  LONGLONG m_elapsed_ms = 0;
  std::optional<int> m_gmt;
  os::SteppedClock m_clock;
  std::unique_ptr<CZebFile> m_file;  // null when there is no file in work
  std::vector<WrittenFile> m_files;
  bool m_is_failing = false;  // the file in work lacks a frame
};

}  // namespace zebtool
