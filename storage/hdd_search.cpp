// The search of one disk: which directories the criteria lead to, and which of their files are
// found.
#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "platform/framework/directory_listing.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"
#include "storage/day_directory.h"
#include "storage/disk_path.h"
#include "storage/file_search_info.h"
#include "storage/found_file.h"
#include "storage/hdd_obj.h"

using namespace zebx;

namespace {

constexpr LONGLONG kSecondsPerDay = 86400;

using DirectoryGetter = CString (CHddObj::*)(const CString&, CTime) const;

struct KindDirectory {
  DWORD m_kind;
  DirectoryGetter m_getter;
};

// The first kind that the criteria have decides. A search around a moment tests them in an order of
// its own, and knows no logs.
constexpr KindDirectory kKindsOfDay[] = {
    {kSearchPicture, &CHddObj::GetPictureDirInfo}, {kSearchClip, &CHddObj::GetClipDirInfo},
    {kSearchLog, &CHddObj::GetLogDirInfo},         {kSearchAlarm, &CHddObj::GetAlarmDirInfo},
    {kSearchFace, &CHddObj::GetFaceDirInfo},
};
constexpr KindDirectory kKindsOfMoment[] = {
    {kSearchPicture, &CHddObj::GetPictureDirInfo},
    {kSearchClip, &CHddObj::GetClipDirInfo},
    {kSearchFace, &CHddObj::GetFaceDirInfo},
    {kSearchAlarm, &CHddObj::GetAlarmDirInfo},
};

DirectoryGetter DirectoryOfKind(std::span<const KindDirectory> kinds,
                                const CSearchParam& criteria) {
  for (const KindDirectory& kind : kinds) {
    if (criteria.IsSearch(kind.m_kind) != 0) return kind.m_getter;
  }
  return &CHddObj::GetVideoDirInfo;
}

// The names of the days of a disk, in lower case; nothing when the disk does not tell them all.
using DayNames = std::unordered_set<CString>;
std::optional<DayNames> DaysOn(const CString& base_dir) {
  DayNames days;
  const auto keep = [&days](std::string_view name, bool is_directory) {
    if (is_directory && IsDayDirectoryName(name)) days.insert(MakeLower(CString(name)));
  };
  if (!CurrentFileSystem().List(base_dir, keep)) return std::nullopt;
  return days;
}

// Hands `step` a moment of every day in the range that the disk may have; it answers whether the
// day was there. From the first gap on the days are those of one listing of the disk, instead of a
// question for every day since the range began; before, asking for a day costs less.
template <typename Step>
void ForEachDay(const CString& base_dir, LONGLONG first_day, LONGLONG last_day, Step&& step) {
  std::optional<DayNames> days;
  bool has_gap = false;
  // Steps of 24 hours on purpose, which hosts allow for: behind a day of 25 hours each step is at
  // 23:00 of the day before, behind one of 23 hours at 01:00.
  for (LONGLONG day = first_day; day <= last_day; day += kSecondsPerDay) {
    // The day that 1970 began in is that of its first moment.
    const bool is_before_1970 = day < 0 && day > -kSecondsPerDay;
    const CTime moment(is_before_1970 ? 0 : static_cast<DWORD>(day));
    if (days && !days->contains(DayDirectoryName(moment))) continue;
    if (step(moment) || std::exchange(has_gap, true)) continue;
    if (day + kSecondsPerDay <= last_day) days = DaysOn(base_dir);
  }
}

// Hands every file in the directory to `step`, with whether it is the last entry of all,
// directories included. A file that cannot be read, or that memory does not suffice for, is as if
// it were not there. So is one with a backslash in its name, a letter like others on the host: its
// library path would lead to another file.
template <typename Step>
void ForEachFile(const CString& path, Step&& step) {
  const auto directory = CurrentFileSystem().OpenDirectory(path);
  const auto entries = directory != nullptr ? ListByName(*directory) : std::nullopt;
  if (!entries) return;
  for (const DirectoryEntry& entry : *entries) {
    if (entry.m_is_directory || entry.m_name.find('\\') != CString::npos) continue;
    try {
      step(FoundFile(*directory, path, entry.m_name), &entry == &entries->back());
    } catch (const CFileException&) {
    } catch (const std::bad_alloc&) {
    }
  }
}

using Header = std::unique_ptr<CZebFileInfo>;

// Another camera than the criteria's.
bool IsOtherCamera(const CSearchParam& criteria, const CZebFileInfo& header) {
  tag_ZEBCAMERAID camera;
  return criteria.GetCameraID(camera) != 0 && !(camera == header.GetCameraID());
}

bool Passes(const CSearchParam& criteria, const CZebFileInfo& header) {
  CString name;
  if (criteria.GetBoardName(name) != 0 && name != header.GetBoardName()) return false;
  if (criteria.GetCameraName(name) != 0 && name != header.GetCameraName()) return false;
  if (IsOtherCamera(criteria, header)) return false;
  CTime time;
  if (criteria.GetBeginTime(time) != 0 && time > header.GetEndTime()) return false;
  if (criteria.GetEndTime(time) != 0 && time < header.GetBeginTime()) return false;
  tag_FRAMESIZE frame_size{};
  return criteria.GetFrameSize(frame_size) == 0 || frame_size == header.GetFrameSize();
}

// The header of a file that is found; else null. Of several kinds in the criteria this order
// decides, which is not that of the directories.
Header FindFile(const CSearchParam& criteria, const FoundFile& file) {
  Header header;
  if (criteria.IsSearch(kSearchPicture) != 0) {
    header = file.ReadPicture();
  } else if (criteria.IsSearch(kSearchFace) != 0) {
    header = file.ReadFaces();
  } else if (criteria.IsSearch(kSearchLog) != 0) {
    return file.ReadLog();  // whatever the other criteria
  } else {
    header = file.ReadRecording();
  }
  return header != nullptr && Passes(criteria, *header) ? std::move(header) : nullptr;
}

}  // namespace

void CHddObj::SearchFile(CFileSearchInfo* info) {
  if (info == nullptr || info->GetSearchParam() == nullptr) return;
  const CSearchParam& criteria = *info->GetSearchParam();
  CString host, disk_name;
  if (criteria.GetHostName(host) == 0) return;
  if (criteria.GetDbsName(disk_name) != 0 && disk_name != GetDbsName()) return;

  const DirectoryGetter directory_of_day = DirectoryOfKind(kKindsOfDay, criteria);
  const auto search_day = [&](CTime day) {
    const CString directory = (this->*directory_of_day)(host, day);
    if (!directory.empty()) SearchDirectory(info, directory + "\\");
    return !directory.empty();
  };
  DWORD date = 0;
  CTime begin, end, moment;
  if (criteria.GetDate(date) != 0) {
    search_day(CTime(date));
  } else if (criteria.GetBeginTime(begin) != 0) {
    LONGLONG last_day = SignedMidnightOf(CTime::GetCurrentTime());
    if (criteria.GetEndTime(end) != 0) last_day = std::min(last_day, SignedMidnightOf(end));
    ForEachDay(m_base_dir, SignedMidnightOf(begin), last_day, search_day);
  } else if (criteria.GetTimeBegin(moment) != 0) {
    const CString directory = (this->*DirectoryOfKind(kKindsOfMoment, criteria))(host, moment);
    if (!directory.empty()) SearchVideoFileByTime(info, directory);
  }
}

void CHddObj::SearchDirectory(CFileSearchInfo* info, const CString& directory) {
  if (info == nullptr || info->GetSearchParam() == nullptr) return;
  const CSearchParam& criteria = *info->GetSearchParam();
  ForEachFile(directory, [&](const FoundFile& file, bool) {
    if (auto header = FindFile(criteria, file)) info->Append(std::move(header));
  });
}

void CHddObj::SearchVideoFileByTime(CFileSearchInfo* info, const CString& directory) {
  if (info == nullptr || info->GetSearchParam() == nullptr) return;
  const CSearchParam& criteria = *info->GetSearchParam();
  ForEachFile(directory, [&](const FoundFile& file, bool is_last) {
    auto header = file.ReadRecording();
    if (header == nullptr || IsOtherCamera(criteria, *header)) return;
    CTime moment;
    if (criteria.GetTimeBegin(moment) != 0) {
      // A file that ends at the very moment is found in the last place only, on purpose.
      const CTime end = header->GetEndTime();
      if (is_last ? moment > end : moment >= end) return;
    }
    info->Append(std::move(header));
  });
}
