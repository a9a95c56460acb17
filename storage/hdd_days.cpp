// The disk object's lists of days, and the deletion of a day.
#include "platform/framework/file_system.h"
#include "storage/day_directory.h"
#include "storage/day_list.h"
#include "storage/disk_tree.h"
#include "storage/hdd_obj.h"
#include "storage/tree_deletion.h"

using namespace zebx;

namespace {

constexpr DWORD kNoDate = 0xFFFFFFFF;

}  // namespace

void CHddObj::Refresh() {
  LoadLocalDir();
}

void CHddObj::LoadLocalDir() {
  // Without its last backslash: the root of a drive becomes the bare drive.
  LoadDays(m_local_dates,
           m_base_dir.empty() ? CString() : m_base_dir.substr(0, m_base_dir.size() - 1));
}

void CHddObj::LoadRemoteDir() {
  LoadDays(m_remote_dates, m_base_dir.empty() ? CString() : m_base_dir + kRemoteFolder);
}

void CHddObj::LoadPictureDir() {
  LoadDays(m_picture_dates, m_base_dir.empty() ? CString() : m_base_dir + kPictureFolder);
}

void CHddObj::GetDirStruct(CDWordArray* list, const CString& directory) {
  if (list != nullptr) AppendDays(*list, directory);
}

int CHddObj::CompareFunc(const void* left, const void* right) {
  const DWORD left_date = *static_cast<const DWORD*>(left);
  const DWORD right_date = *static_cast<const DWORD*>(right);
  return left_date < right_date ? -1 : left_date > right_date ? 1 : 0;
}

int CHddObj::IsVideoDir(const CString& name) {
  return IsDayDirectoryName(name) ? 1 : 0;
}

int CHddObj::GetVideoDirDate(CTime& date, const CString& name) {
  const auto parsed = ParseDayDirectoryName(name);
  if (!parsed) return 0;
  date = *parsed;
  return 1;
}

int CHddObj::GetDirNum(int remote) const {
  return static_cast<int>((remote != 0 ? m_remote_dates : m_local_dates).size());
}

DWORD CHddObj::GetDirDate(int index, int remote) const {
  const CDWordArray& dates = remote != 0 ? m_remote_dates : m_local_dates;
  if (index < 0 || static_cast<std::size_t>(index) >= dates.size()) return kNoDate;
  return dates[static_cast<std::size_t>(index)];
}

int CHddObj::FindDate(DWORD date, int remote) const {
  // Stopping at the first older date is on purpose; hosts ask for the oldest day this way.
  std::optional<bool> meets;
  if (remote != 0) meets = MeetsDate(m_remote_dates, date);
  if (!meets) meets = MeetsDate(m_local_dates, date);
  return meets.value_or(false) ? 1 : 0;
}

int CHddObj::FindOldestDir(DWORD& date, DWORD after) const {
  const auto oldest = OldestDayAfter(m_local_dates, after);
  date = oldest.value_or(0);
  return oldest ? 1 : 0;
}

int CHddObj::DeleteDir(const CString& directory, DWORD& freed_bytes) {
  return DeleteTree(directory, freed_bytes) ? 1 : 0;
}

int CHddObj::DeleteDate(DWORD date, DWORD& freed_bytes) {
  freed_bytes = 0;
  // Out of the list first, on purpose: a day that cannot be deleted must not hold up recycling.
  if (m_base_dir.empty() || !TakeDay(m_local_dates, date)) return 0;
  DeleteTree(m_base_dir + DayDirectoryName(CTime(date)), freed_bytes);
  return freed_bytes != 0 ? 1 : 0;
}

int CHddObj::IsAnyFile(const CString& directory) {
  bool has_file = false;
  const auto look = [&has_file](std::string_view, bool is_directory) {
    has_file = has_file || !is_directory;
  };
  CurrentFileSystem().List(directory, look);
  return has_file ? 1 : 0;
}
