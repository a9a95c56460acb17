#include "tools/zebtool/disks/database_session.h"

#include <utility>

#include "platform/framework/archive.h"
#include "platform/framework/file.h"
#include "platform/framework/file_system.h"
#include "platform/os/files/directories.h"
#include "platform/os/files/drives.h"
#include "storage/database_format.h"
#include "storage/dbs.h"
#include "tools/zebtool/console/command_line.h"

using namespace zebx;

namespace zebtool {
namespace {

bool Exists(const std::string& path) {
  return CurrentFileSystem().Status(path).has_value();
}

// A disk that is not there drops out of the list, and closing would write it without.
void RefuseMissingDisks(const std::string& path) {
  CFile file;
  if (file.Open(path, CFile::kModeRead | CFile::kShareDenyNone) == 0) {
    throw JobError("cannot read the database file '" + path + "'");
  }
  try {
    CArchive archive(file, CArchive::Mode::kLoad);
    const DWORD disks = LoadDatabaseBeginning(archive).m_disks;
    for (DWORD disk = 0; disk < disks; ++disk) {
      const CString directory = LoadDiskRecord(archive).m_path;
      if (directory.find(':') != 1) throw JobError("'" + path + "' is no database file");
      if (os::IsDirectory(directory) == 0) {
        throw JobError("the disk '" + directory +
                       "' is not there; mount its drive with --drive or ZEBX_DRIVES, or make the "
                       "directory");
      }
    }
  } catch (const CFileException&) {
    throw JobError("'" + path + "' is no database file, or not a whole one");
  }
}

}  // namespace

void AddDatabaseOptions(const Command& command, DatabaseOptions& options, DatabaseNeed need) {
  constexpr char kFileHelp[] = "the database file";
  command.Heading("database");
  if (need == DatabaseNeed::kAlways) {
    command.RequiredOption("--db", "FILE", options.file, kFileHelp);
  } else {
    command.Option("--db", "FILE", options.file, kFileHelp);
  }
  command.Option("--data", "DIR", options.data_directory,
                 "the data directory, for a database without disks");
  command.Option("--host", "NAME", options.host, "this recorder's name; default: recorder");
  const auto mount = [](const std::string& drive) {
    if (os::MountDrives(drive) == 0) {
      throw UsageError("--drive takes a drive such as d=/srv/video1:64M, not '" + drive + "'");
    }
  };
  command.Options("--drive", "D=/PATH[:KIND][:QUOTA]", mount,
                  "mounts a drive, as ZEBX_DRIVES does; may be repeated");
}

DatabaseSession::DatabaseSession(DatabaseOptions options, Start start,
                                 LibrarySession::DeletedDayReporter report_deleted_day)
    : m_options(std::move(options)),
      m_library(std::make_unique<LibrarySession>(std::move(report_deleted_day))) {
  Open(start);
}

DatabaseSession::DatabaseSession(DatabaseOptions options, const LibrarySession&)
    : m_options(std::move(options)) {
  Open(Start::kExisting);
}

DatabaseSession::~DatabaseSession() {
  dbsCloseDatabase();
}

void DatabaseSession::Open(Start start) {
  const std::string& file = m_options.file;
  if (start == Start::kExisting) {
    if (!Exists(file)) {
      throw JobError("there is no database '" + file + "'; 'zebtool store init' makes one");
    }
    RefuseMissingDisks(file);
  } else if (Exists(file)) {
    throw JobError("'" + file + "' is there already; 'zebtool store add' adds a disk to it");
  }
  if (dbsOpenDatabase(m_options.data_directory, file, m_options.host) == 0) {
    throw JobError(start == Start::kExisting
                       ? "no disk of '" + file + "' can be used"
                       : "no disk can be made under '" + m_options.data_directory +
                             "'; it has to be a directory on a fixed or network drive");
  }
}

// Of the one database that is open, of which this class is the owner.
// NOLINTBEGIN(readability-convert-member-functions-to-static)

std::vector<CHddObj*> DatabaseSession::Disks() const {
  std::vector<CHddObj*> disks;
  const int count = dbsGetHddNum();
  for (int index = 0; index < count; ++index) {
    CString name;
    CHddObj* disk = nullptr;
    dbsGetDbsName(index, &name);
    if (dbsGetHDDInfo(&disk, name) != 0 && disk != nullptr) disks.push_back(disk);
  }
  return disks;
}

std::string DatabaseSession::WorkingDisk() const {
  CString name;
  CString directory;
  return dbsGetWorkHDD(&name, &directory) == 0 ? name : CString();
}

// NOLINTEND(readability-convert-member-functions-to-static)

void DatabaseSession::Save() const {
  if (dbsSaveDatabase() == 0) {
    throw JobError("cannot write the database file '" + m_options.file + "'");
  }
}

}  // namespace zebtool
