// The disk object's directories: which files lie where.
#include <span>
#include <vector>

#include "storage/day_directory.h"
#include "storage/disk_path.h"
#include "storage/disk_tree.h"
#include "storage/hdd_obj.h"

using namespace zebx;

CString CHddObj::MakeDayDir(const CString& folder, CTime time, CDWordArray& dates) {
  CString path = MakeLower(folder + DayDirectoryName(time));
  const DirectoryIs day = FindOrMakeDay(path);
  if (day == DirectoryIs::kMissing) return {};
  if (day == DirectoryIs::kNew) dates.push_back(MidnightOf(time).GetTime());
  return path;
}

CString CHddObj::MakeTodayDir(const char* folder, CDWordArray& dates) {
  if (m_base_dir.empty()) return {};
  const CString path = m_base_dir + folder;
  if (FindOrMakeDirectory(path) == DirectoryIs::kMissing) return {};
  return MakeDayDir(path + "\\", CTime::GetCurrentTime(), dates);
}

CString CHddObj::GetVideoDir() {
  return MakeTodayDir(kLocalFolder, m_local_dates);
}

CString CHddObj::GetRemoteVideoDir() {
  return MakeTodayDir(kRemoteFolder, m_remote_dates);
}

CString CHddObj::GetPictureDir() {
  return MakeTodayDir(kPictureFolder, m_picture_dates);
}

CString CHddObj::MakeDirs(CTime time, std::span<const CString> levels) {
  if (m_base_dir.empty()) return {};
  if (time == CTime()) time = CTime::GetCurrentTime();
  CString path = MakeDayDir(m_base_dir, time, m_local_dates);
  for (const CString& level : levels) {
    if (path.empty()) return {};
    path += MakeLower("\\" + level);
    if (FindOrMakeDirectory(path) == DirectoryIs::kMissing) return {};
  }
  return path;
}

CString CHddObj::MakeLeafDir(const CString& name, CTime time, tag_ZEBFILETYPE type) {
  const CString levels[] = {name, kLeafNames[type]};
  return MakeDirs(time, levels);
}

CString CHddObj::GetVideoDir(const CString& name, CTime time) {
  return MakeLeafDir(name, time, kZebFileVideo);
}

CString CHddObj::GetClipDir(const CString& name, CTime time) {
  return MakeLeafDir(name, time, kZebFileClip);
}

CString CHddObj::GetAlarmDir(const CString& name, CTime time) {
  return MakeLeafDir(name, time, kZebFileAlarm);
}

CString CHddObj::GetPictureDir(const CString& name, CTime time) {
  return MakeLeafDir(name, time, kZebFilePicture);
}

CString CHddObj::GetLogDir(const CString& name, CTime time) {
  return MakeLeafDir(name, time, kZebFileLog);
}

CString CHddObj::GetFaceDir(const CString& name, CTime time) {
  return MakeLeafDir(name, time, kZebFileFace);
}

CString CHddObj::GetDir(const CString& host, const CString& camera, tag_ZEBFILETYPE type,
                        CTime time) {
  std::vector<CString> levels;
  if (!host.empty()) levels.push_back(host);
  levels.push_back(camera);
  const bool is_known = type < std::size(kLeafNames);
  if (is_known) levels.emplace_back(kLeafNames[type]);
  const CString path = MakeDirs(time, levels);
  return is_known ? path : CString();
}

CString CHddObj::FindLeafDir(const CString& name, CTime time, tag_ZEBFILETYPE type) const {
  if (m_base_dir.empty()) return {};
  const CString day = MakeLower(m_base_dir + DayDirectoryName(time));
  CString path = day + MakeLower("\\" + name + "\\" + kLeafNames[type]);
  return IsDirectory(path) && IsDay(day) ? path : CString();
}

CString CHddObj::GetVideoDirInfo(const CString& name, CTime time) const {
  return FindLeafDir(name, time, kZebFileVideo);
}

CString CHddObj::GetClipDirInfo(const CString& name, CTime time) const {
  return FindLeafDir(name, time, kZebFileClip);
}

CString CHddObj::GetAlarmDirInfo(const CString& name, CTime time) const {
  return FindLeafDir(name, time, kZebFileAlarm);
}

CString CHddObj::GetPictureDirInfo(const CString& name, CTime time) const {
  return FindLeafDir(name, time, kZebFilePicture);
}

CString CHddObj::GetLogDirInfo(const CString& name, CTime time) const {
  return FindLeafDir(name, time, kZebFileLog);
}

CString CHddObj::GetFaceDirInfo(const CString& name, CTime time) const {
  return FindLeafDir(name, time, kZebFileFace);
}
