// The disk object's recycling: finding its oldest day and deleting it.
#include <algorithm>
#include <vector>

#include "platform/framework/file_find.h"
#include "platform/os/directories.h"
#include "platform/os/files.h"
#include "storage/day_directory.h"
#include "storage/hdd_obj.h"

namespace {

constexpr char kEverything[] = "\\*.*";

// A directory that is being emptied.
struct OpenLevel {
  CString m_directory;
  CFileFind m_finder;
  int m_more = 0;
};

bool OpenDirectory(std::vector<OpenLevel>& levels, const CString& directory) {
  OpenLevel level;
  level.m_directory = directory;
  level.m_more = level.m_finder.FindFile(directory + kEverything);
  if (level.m_more == 0) return false;
  levels.push_back(std::move(level));
  return true;
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

// Keeps the directories on the way down in a list instead of on the stack: whoever can write to the
// disk decides how deep the tree is.
int CHddObj::DeleteDir(const CString& directory, DWORD& freed_bytes) {
  freed_bytes = 0;
  // Inside the tree the finder takes a link for a file, so nothing outside is reached.
  if (os::IsSymbolicLink(directory) != 0) return 0;
  std::vector<OpenLevel> levels;
  if (!OpenDirectory(levels, directory)) return 0;
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
  CFileFind finder;
  int more = finder.FindFile(directory + kEverything);
  while (more != 0) {
    more = finder.FindNextFile();
    if (!finder.IsDirectory()) return 1;
  }
  return 0;
}
