// The disk object's recycling: finding its oldest day and deleting it.
#include <algorithm>
#include <vector>

#include "platform/framework/file_find.h"
#include "platform/os/files/directories.h"
#include "platform/os/files/drives.h"
#include "platform/os/files/files.h"
#include "storage/day_directory.h"
#include "storage/disk_path.h"
#include "storage/hdd_obj.h"

using namespace zebx;

namespace {

constexpr char kEverything[] = "\\*.*";
constexpr char kEverythingOnHost[] = "/*.*";

// A directory that is being emptied, by its host path.
struct OpenLevel {
  CString m_directory;
  CFileFind m_finder;
  int m_more = 0;
};

bool OpenDirectory(std::vector<OpenLevel>& levels, const CString& directory) {
  OpenLevel level;
  level.m_directory = directory;
  level.m_more = level.m_finder.FindFile(directory + kEverythingOnHost);
  if (level.m_more == 0) return false;
  levels.push_back(std::move(level));
  return true;
}

// Only what lies below the root of a drive is ever deleted: an empty path, a host path or one that
// folds to a root is a slip whose price would be a whole disk.
bool IsBelowDriveRoot(const CString& directory) {
  return os::GetDriveType(directory) != os::DriveKind::kNoRoot &&
         os::FullPath(directory).size() > kDriveRootChars;
}

bool DeleteOneFile(const CString& path, DWORD& freed_bytes) {
  ULONGLONG length_bytes;
  if (os::DeleteFile(path, &length_bytes) == 0) return false;
  freed_bytes += static_cast<DWORD>(length_bytes);
  return true;
}

}  // namespace

int CHddObj::FindOldestDir(DWORD& date, DWORD after) const {
  const auto found = std::find_if(m_local_dates.begin(), m_local_dates.end(),
                                  [after](DWORD entry) { return entry > after; });
  date = found != m_local_dates.end() ? *found : 0;
  return found != m_local_dates.end() ? 1 : 0;
}

// Whoever can write to the disk decides on names and depth. So the walk goes by host paths, in
// which a backslash inside a name leads nowhere, and keeps the directories on the way down in a
// list instead of on the stack.
int CHddObj::DeleteDir(const CString& directory, DWORD& freed_bytes) {
  freed_bytes = 0;
  if (!IsBelowDriveRoot(directory)) return 0;
  const auto host_path = os::HostPath(directory);
  // Inside the tree the finder takes a link for a file, so nothing outside is reached.
  if (!host_path || os::IsSymbolicLink(*host_path) != 0) return 0;
  std::vector<OpenLevel> levels;
  if (!OpenDirectory(levels, *host_path)) return 0;
  while (!levels.empty()) {
    OpenLevel& level = levels.back();
    if (level.m_more == 0) {
      if (os::RemoveDirectory(level.m_directory) == 0) return 0;
      levels.pop_back();
      continue;
    }
    level.m_more = level.m_finder.FindNextFile();
    if (level.m_finder.IsDots()) continue;
    if (level.m_finder.IsDirectory()) {
      if (!OpenDirectory(levels, level.m_finder.GetFilePath())) return 0;
    } else if (!DeleteOneFile(level.m_finder.GetFilePath(), freed_bytes)) {
      return 0;
    }
  }
  return 1;
}

int CHddObj::DeleteDate(DWORD date, DWORD& freed_bytes) {
  freed_bytes = 0;
  const auto day = std::find_if(m_local_dates.begin(), m_local_dates.end(),
                                [date](DWORD entry) { return entry >= date; });
  if (day == m_local_dates.end() || *day != date || m_base_dir.empty()) return 0;
  // Out of the list first, on purpose: a day that cannot be deleted must not hold up recycling.
  m_local_dates.erase(day);
  DeleteDir(m_base_dir + DayDirectoryName(CTime(date)), freed_bytes);
  return freed_bytes != 0 ? 1 : 0;
}

int CHddObj::IsAnyFile(const CString& directory) {
  if (os::IsDirectory(directory) == 0) return 0;
  CFileFind finder;
  int more = finder.FindFile(directory + kEverything);
  while (more != 0) {
    more = finder.FindNextFile();
    if (!finder.IsDirectory()) return 1;
  }
  return 0;
}
