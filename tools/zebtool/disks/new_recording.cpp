#include "tools/zebtool/disks/new_recording.h"

#include "platform/framework/file_system.h"
#include "storage/dbs.h"
#include "storage/recording_name.h"
#include "storage/recycling_results.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/disks/database_session.h"

using namespace zebx;

namespace zebtool {
namespace {

int LookAtWorkingDisk() {
  DWORD free_mb = 0;
  return dbsCheckWorkHDD(&free_mb);
}

void ChangeWorkingDisk() {
  if (dbsChangeWorkDir() != kWorkingDiskChosen) {
    throw JobError("no disk has room, and no disk that recycles has a day before today to delete");
  }
}

}  // namespace

bool IsWorkingDiskShort() {
  const int state = LookAtWorkingDisk();
  return state == kWorkingDiskFull || state == kWorkingDiskNone;
}

// One call as a rule deletes one day, which may not be enough.
void MakeRoom() {
  int state = LookAtWorkingDisk();
  if (state == kWorkingDiskNone) {
    ChangeWorkingDisk();
    state = LookAtWorkingDisk();
  }
  while (state == kWorkingDiskFull) {
    ChangeWorkingDisk();
    state = LookAtWorkingDisk();
  }
  if (state == kWorkingDiskNone) throw JobError("the working disk does not answer");
}

std::optional<std::string> ExistingRecording(const DatabaseSession& database,
                                             const CZebFileInfo& header, RecordingKind kind) {
  const std::string working_disk = database.WorkingDisk();
  const CTime now = CTime::GetCurrentTime();
  const bool is_alarm = kind == RecordingKind::kAlarm;
  for (const CHddObj* disk : database.Disks()) {
    if (disk->GetDbsName() != working_disk) continue;
    const CString directory = is_alarm ? disk->GetAlarmDirInfo(header.GetHostName(), now)
                                       : disk->GetVideoDirInfo(header.GetHostName(), now);
    CString path =
        directory + '\\' + (is_alarm ? AlarmRecordingName(header) : RecordingName(header));
    if (!directory.empty() && CurrentFileSystem().LinkStatus(path)) return path;
  }
  return std::nullopt;
}

std::unique_ptr<CZebFile> CreateRecording(const DatabaseSession& database, CZebFileInfo& header,
                                          RecordingKind kind) {
  CZebFile* file = nullptr;
  const auto create = kind == RecordingKind::kAlarm ? dbsCreateZebAlarmFile : dbsCreateZebFile;
  if (create(&file, &header) == 0) {
    throw JobError("cannot create a recording on the disk " + database.WorkingDisk());
  }
  return std::unique_ptr<CZebFile>(file);
}

std::string FinishRecording(std::unique_ptr<CZebFile> file) {
  std::string path = file->GetFileName();
  if (dbsCloseZebFile(file.release()) == 0) {
    throw JobError("the disk refuses the last bytes of '" + path +
                   "'; 'zebtool salvage' makes a whole recording of it");
  }
  return path;
}

}  // namespace zebtool
