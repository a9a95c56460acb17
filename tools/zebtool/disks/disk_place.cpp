#include "tools/zebtool/disks/disk_place.h"

#include "platform/framework/file_system.h"
#include "storage/dbs.h"
#include "storage/recording_name.h"
#include "storage/recycling.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/disks/database_session.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr ULONGLONG kLookEveryMs = 5000;
constexpr ULONGLONG kMsPerMinute = 60000;

int LookAtWorkingDisk() {
  DWORD free_mb = 0;
  return dbsCheckWorkHDD(&free_mb);
}

void ChangeWorkingDisk() {
  if (dbsChangeWorkDir() != kWorkingDiskChosen) {
    throw JobError("no disk has room, and no disk that recycles has a day before today to delete");
  }
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

}  // namespace

// The database names a recording after its camera and its begin, and would empty one that is there
// already.
void DiskPlace::RefuseExisting(const CZebFileInfo& header) const {
  const std::string working_disk = m_database.WorkingDisk();
  const CTime now = CTime::GetCurrentTime();
  for (const CHddObj* disk : m_database.Disks()) {
    if (disk->GetDbsName() != working_disk) continue;
    const CString directory = m_plan.alarm ? disk->GetAlarmDirInfo(header.GetHostName(), now)
                                           : disk->GetVideoDirInfo(header.GetHostName(), now);
    const CString path =
        directory + '\\' + (m_plan.alarm ? AlarmRecordingName(header) : RecordingName(header));
    if (!directory.empty() && CurrentFileSystem().LinkStatus(path)) {
      throw JobError("'" + path + "' is there already; give another --begin or --camera");
    }
  }
}

std::unique_ptr<CZebFile> DiskPlace::Create(CZebFileInfo& header, std::size_t) {
  MakeRoom();
  RefuseExisting(header);
  CZebFile* file = nullptr;
  const auto create = m_plan.alarm ? dbsCreateZebAlarmFile : dbsCreateZebFile;
  if (create(&file, &header) == 0) {
    throw JobError("cannot create a recording on the disk " + m_database.WorkingDisk());
  }
  m_file_begin_ms = m_last_look_ms = m_elapsed_ms;
  return std::unique_ptr<CZebFile>(file);
}

std::string DiskPlace::Close(std::unique_ptr<CZebFile> file, bool) {
  std::string path = file->GetFileName();
  if (dbsCloseZebFile(file.release()) == 0) {
    throw JobError("the disk refuses the last bytes of '" + path +
                   "'; 'zebtool salvage' makes a whole recording of it");
  }
  return path;
}

bool DiskPlace::IsFileDue(ULONGLONG elapsed_ms) {
  m_elapsed_ms = elapsed_ms;
  if (m_plan.minutes != 0 && elapsed_ms - m_file_begin_ms >= m_plan.minutes * kMsPerMinute) {
    return true;
  }
  if (elapsed_ms - m_last_look_ms < kLookEveryMs) return false;
  m_last_look_ms = elapsed_ms;
  const int state = LookAtWorkingDisk();
  return state == kWorkingDiskFull || state == kWorkingDiskNone;
}

}  // namespace zebtool
