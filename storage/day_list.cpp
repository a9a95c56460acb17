#include "storage/day_list.h"

#include <algorithm>

#include "platform/framework/file_system.h"
#include "platform/os/files/drives.h"
#include "storage/day_directory.h"

namespace zebx {

void AppendDays(CDWordArray& dates, const CString& directory) {
  constexpr std::size_t kBareDriveChars = 2;  // such as d:
  if (directory.empty()) return;
  if (directory.size() == kBareDriveChars) {
    // On purpose: on the root of a network drive nothing is listed, and so nothing recycled.
    const os::DriveKind kind = os::GetDriveType(directory);
    if (kind != os::DriveKind::kFixed && kind != os::DriveKind::kRemovable) return;
  }
  // Not in the order of names: it is of no use here and costs as much as the rest.
  const std::size_t before = dates.size();
  const auto take_day = [&dates](std::string_view name, bool is_directory) {
    if (!is_directory) return;
    if (const auto date = ParseDayDirectoryName(name)) dates.push_back(date->GetTime());
  };
  if (!CurrentFileSystem().List(directory, take_day)) dates.resize(before);
}

void LoadDays(CDWordArray& dates, const CString& directory) {
  dates = CDWordArray();
  AppendDays(dates, directory);
  std::sort(dates.begin(), dates.end());
}

std::optional<DWORD> OldestDayAfter(const CDWordArray& dates, DWORD after) {
  const auto found =
      std::find_if(dates.begin(), dates.end(), [after](DWORD entry) { return entry > after; });
  return found != dates.end() ? std::optional(*found) : std::nullopt;
}

bool TakeDay(CDWordArray& dates, DWORD date) {
  const auto found =
      std::find_if(dates.begin(), dates.end(), [date](DWORD entry) { return entry >= date; });
  if (found == dates.end() || *found != date) return false;
  dates.erase(found);
  return true;
}

std::optional<bool> MeetsDate(const CDWordArray& dates, DWORD date) {
  for (const DWORD entry : dates) {
    if (entry == date) return true;
    if (entry < date) return false;
  }
  return std::nullopt;
}

}  // namespace zebx
