// An open database for as long as a subcommand works with it, and the options that name it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "storage/hdd_obj.h"
#include "tools/zebtool/disks/library_session.h"

namespace zebtool {

class Command;

// As a command line gives them.
struct DatabaseOptions {
  std::string file;            // --db
  std::string data_directory;  // --data; empty for none
  std::string host = "recorder";
};

enum class DatabaseNeed { kAlways, kMayBeAbsent };

// Drives of --drive are mounted as the line is read, for good.
void AddDatabaseOptions(const Command& command, DatabaseOptions& options,
                        DatabaseNeed need = DatabaseNeed::kAlways);

// Opens the database; the destructor closes it, which writes the database file anew. One at a time,
// in the thread that made it.
class DatabaseSession {
 public:
  enum class Start { kExisting, kNew };

  // With a library of its own. Throws JobError: for kExisting when there is no such file, when it
  // holds no disk, or when the directory of a disk in it is not there, for that disk would be lost
  // with the next save; for kNew when there is such a file or no disk can be made under the data
  // directory.
  explicit DatabaseSession(DatabaseOptions options, Start start = Start::kExisting,
                           LibrarySession::DeletedDayReporter report_deleted_day = {});
  // The existing database of a library that is initialised already and outlives this.
  DatabaseSession(DatabaseOptions options, const LibrarySession& library);
  ~DatabaseSession();
  DatabaseSession(const DatabaseSession&) = delete;
  DatabaseSession& operator=(const DatabaseSession&) = delete;

  // What follows asks the open database, of which there is one in the process.
  // NOLINTBEGIN(readability-convert-member-functions-to-static)

  // The database's own disks by index; valid until one is added or removed.
  std::vector<CHddObj*> Disks() const;
  // The name of the working disk; empty without one.
  std::string WorkingDisk() const;

  // NOLINTEND(readability-convert-member-functions-to-static)
  // Throws JobError when the file cannot be written.
  void Save() const;

 private:
  void Open(Start start);

  DatabaseOptions m_options;
  std::unique_ptr<LibrarySession> m_library;  // null when it is another's
};

}  // namespace zebtool
