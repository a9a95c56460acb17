// Recordings on the working disk of the open database, which is given room when it runs short.
#pragma once

#include "tools/zebtool/recordings/recording_writer.h"

namespace zebtool {

class DatabaseSession;

// Looks at the working disk before every file and every few seconds of recorded time. On a shortage
// the file in work is finished first, so that recycling never deletes what is being written; then
// the database chooses a disk or deletes days, and recording goes on in a further file.
class DiskPlace final : public RecordingPlace {
 public:
  struct Plan {
    bool alarm = false;
    DWORD minutes = 0;  // of recorded time in a file; 0 for as many as fit
  };

  // The database is borrowed.
  DiskPlace(const DatabaseSession& database, Plan plan) : m_database(database), m_plan(plan) {}

  std::unique_ptr<CZebFile> Create(CZebFileInfo& header, std::size_t number) override;
  std::string Close(std::unique_ptr<CZebFile> file, bool whole) override;
  bool IsFileDue(ULONGLONG elapsed_ms) override;

 private:
  const DatabaseSession& m_database;
  const Plan m_plan;
  ULONGLONG m_elapsed_ms = 0;  // of the frame in hand
  ULONGLONG m_file_begin_ms = 0;
  ULONGLONG m_last_look_ms = 0;
};

}  // namespace zebtool
