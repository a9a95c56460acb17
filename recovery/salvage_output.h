// The recordings that salvage writes: each under a temporary name until all are whole.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "record/zeb_file.h"
#include "recovery/salvage.h"

class CZebFrameData;

namespace zebx {

class SalvageOutput {
 public:
  enum class Answer {
    kWritten,
    kWantsIFrame,  // a file begins with one
    kFailed,       // Failure() says why
  };

  // `header` describes the camera; its gmt is kept. Each file ends in `output`, or beside it.
  SalvageOutput(const CZebFileInfo& header, CString output, bool replace);
  ~SalvageOutput();
  SalvageOutput(const SalvageOutput&) = delete;
  SalvageOutput& operator=(const SalvageOutput&) = delete;

  // Appends the frame. `begin` is the moment of the first one.
  Answer Append(CZebFrameData& frame, CTime begin);
  // The next frame that is an I-frame begins a further file.
  void EndFile() { m_ends_file = true; }
  // Finishes the file in work, if there is one. False when it could not be; Failure() says why.
  bool CloseFile();
  // Gives each file its name. False when one could not be given; Failure() says why.
  bool GiveNames();
  // Leaves the file in work as far as it came, under its temporary name.
  void Abandon();
  // Deletes what was made and is not finished.
  void Discard();

  // The files in order; paths are temporary until GiveNames.
  const std::vector<SalvagedFile>& Files() const { return m_files; }
  const CString& Failure() const { return m_failure; }
  // The failure is that a file is in the way.
  bool IsInTheWay() const { return m_is_in_the_way; }

 private:
  bool OpenFile(CTime begin, DWORD first_stamp);
  CString PathOf(std::size_t number) const;

  CZebFileInfo m_header;
  CString m_output;
  bool m_replace;
  bool m_ends_file = false;
  bool m_is_in_the_way = false;
  CString m_failure;
  CTime m_begin;            // of the file in work
  DWORD m_begin_stamp = 0;  // of the file in work
  DWORD m_last_stamp = 0;
  std::unique_ptr<CZebFile> m_file;  // null when there is none in work
  std::vector<SalvagedFile> m_files;
};

}  // namespace zebx
