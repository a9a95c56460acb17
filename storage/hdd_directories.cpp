// The disk object's identity, its tree of directories, and the lists of its days.
#include <algorithm>
#include <optional>
#include <utility>

#include "platform/framework/archive.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/file_system.h"
#include "platform/os/files/directories.h"
#include "platform/os/files/drives.h"
#include "storage/day_directory.h"
#include "storage/disk_path.h"
#include "storage/hdd_obj.h"

using namespace zebx;

namespace {

constexpr char kDefaultDatabaseName[] = "ZebDatabase";
constexpr DWORD kDefaultReservedMb = 1000;
constexpr DWORD kAlarmAboveReservedMb = 50;
constexpr DWORD kNoDate = 0xFFFFFFFF;
constexpr std::size_t kBareDriveChars = 2;  // such as d:

constexpr char kRemoteFolder[] = "Remote";
constexpr char kPictureFolder[] = "Picture";

// In the order of tag_ZEBFILETYPE.
constexpr const char* kLeafNames[] = {"Video", "Clip", "Alarm", "Picture", "Log", "Face"};

bool IsRootOfDisk(const CString& root) {
  if (root.empty() || (root.back() != '\\' && root.back() != '/')) return false;
  const os::DriveKind kind = os::GetDriveType(root);
  return kind == os::DriveKind::kFixed || kind == os::DriveKind::kNetwork;
}

// A file in the directory's place makes CreateDirectory fail. `made` tells a new directory.
bool FindOrMakeDir(const CString& path, bool& made) {
  made = false;
  if (os::IsDirectory(path) != 0) return true;
  made = os::CreateDirectory(path) != 0;
  return made;
}

// Whether a walk over ascending dates meets `date` before an older one; nothing when it met
// neither.
std::optional<bool> MeetsDate(const CDWordArray& dates, DWORD date) {
  for (const DWORD entry : dates) {
    if (entry == date) return true;
    if (entry < date) return false;
  }
  return std::nullopt;
}

}  // namespace

IMPLEMENT_DYNAMIC(CHddObj, CObject)

CHddObj::CHddObj()
    : m_database_name(kDefaultDatabaseName),
      m_plain_database_name(kDefaultDatabaseName),
      m_reserved_mb(kDefaultReservedMb),
      m_alarm_mb(kDefaultReservedMb + kAlarmAboveReservedMb) {}

CHddObj::~CHddObj() = default;

void CHddObj::operator=(const CHddObj& other) {
  if (&other == this) return;
  m_base_dir = other.m_base_dir;
  m_database_name = other.m_database_name;
  m_local_dates = other.m_local_dates;
}

CObject* CHddObj::CreateObject() {
  return new CHddObj;
}

int CHddObj::Create(tag_HDDPARAM* param) {
  if (param == nullptr) return 0;
  m_recycle = param->m_recycle;
  m_reserved_mb = param->m_reserved_mb;
  m_alarm_mb = param->m_reserved_mb + kAlarmAboveReservedMb;
  m_alarm_when_space_not_enough = param->m_alarm_when_space_not_enough;
  m_alarm_sound = param->m_alarm_sound;

  CString path = MakeLower(param->m_path);
  const CString root = DriveRoot(path);
  if (!IsRootOfDisk(root)) return 0;
  if (path.size() > kDriveRootChars) {
    if (path.back() == '\\') path.pop_back();
    bool made;
    if (!FindOrMakeDir(path, made)) return 0;
    path += '\\';
  }
  m_base_dir = path;
  m_plain_database_name =
      param->m_database_name.empty() ? kDefaultDatabaseName : param->m_database_name;
  m_database_name = m_plain_database_name + "(" + root + ")";
  LoadLocalDir();
  return 1;
}

int CHddObj::ChangeBaseDir(tag_HDDPARAM* param) {
  return param != nullptr && *this == param->m_path ? Create(param) : 0;
}

int CHddObj::operator==(const CString& path) const {
  const CString root = MakeLower(DriveRoot(path));
  return !root.empty() && root == MakeLower(GetHDD()) ? 1 : 0;
}

CString CHddObj::GetHDD() const {
  return DriveRoot(m_base_dir);
}

void CHddObj::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << LONG{m_recycle} << m_base_dir << m_database_name << m_reserved_mb
            << LONG{m_alarm_when_space_not_enough} << m_alarm_sound;
  } else {
    archive >> m_recycle >> m_base_dir >> m_database_name >> m_reserved_mb >>
        m_alarm_when_space_not_enough >> m_alarm_sound;
  }
}

CString CHddObj::MakeDayDir(const CString& folder, CTime time, CDWordArray& dates) {
  CString path = MakeLower(folder + DayDirectoryName(time));
  bool made;
  if (!FindOrMakeDir(path, made)) return {};
  if (made) dates.push_back(MidnightOf(time).GetTime());
  return path;
}

CString CHddObj::MakeTodayDir(const char* folder, CDWordArray& dates) {
  if (m_base_dir.empty()) return {};
  const CString path = m_base_dir + folder;
  bool made;
  if (!FindOrMakeDir(path, made)) return {};
  return MakeDayDir(path + "\\", CTime::GetCurrentTime(), dates);
}

CString CHddObj::GetVideoDir() {
  return MakeTodayDir("Local", m_local_dates);
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
    bool made;
    if (!FindOrMakeDir(path, made)) return {};
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
  CString path =
      MakeLower(m_base_dir + DayDirectoryName(time) + "\\" + name + "\\" + kLeafNames[type]);
  return os::IsDirectory(path) != 0 ? path : CString();
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

void CHddObj::Refresh() {
  LoadLocalDir();
}

void CHddObj::LoadLocalDir() {
  LoadDates(m_local_dates, m_base_dir.substr(0, std::max<std::size_t>(m_base_dir.size(), 1) - 1));
}

void CHddObj::LoadRemoteDir() {
  LoadDates(m_remote_dates, m_base_dir.empty() ? CString() : m_base_dir + kRemoteFolder);
}

void CHddObj::LoadPictureDir() {
  LoadDates(m_picture_dates, m_base_dir.empty() ? CString() : m_base_dir + kPictureFolder);
}

void CHddObj::LoadDates(CDWordArray& dates, const CString& directory) {
  dates = CDWordArray();
  GetDirStruct(&dates, directory);
  std::sort(dates.begin(), dates.end());
}

void CHddObj::GetDirStruct(CDWordArray* list, const CString& directory) {
  if (list == nullptr || directory.empty()) return;
  if (directory.size() == kBareDriveChars) {
    // On purpose: on the root of a network drive nothing is listed, and so nothing recycled.
    const os::DriveKind kind = os::GetDriveType(directory);
    if (kind != os::DriveKind::kFixed && kind != os::DriveKind::kRemovable) return;
  }
  // Not through the finder: its order of names is of no use here and costs as much as the rest.
  const std::size_t before = list->size();
  const auto take_day = [list](std::string_view name, bool is_directory) {
    if (!is_directory) return;
    if (const auto date = ParseDayDirectoryName(name)) list->push_back(date->GetTime());
  };
  // Half a list would take a later day for the oldest.
  if (!CurrentFileSystem().List(directory, take_day)) list->resize(before);
}

int CHddObj::CompareFunc(const void* left, const void* right) {
  const DWORD left_date = *static_cast<const DWORD*>(left);
  const DWORD right_date = *static_cast<const DWORD*>(right);
  return left_date < right_date ? -1 : left_date > right_date ? 1 : 0;
}

int CHddObj::IsVideoDir(const CString& name) {
  return ParseDayDirectoryName(name) ? 1 : 0;
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

DWORD CHddObj::GetDirSize() const {
  if (m_base_dir.empty()) return sizeof(DWORD);
  return static_cast<DWORD>(3 * sizeof(DWORD) + m_base_dir.size() + m_database_name.size() +
                            sizeof(DWORD) * m_local_dates.size());
}

DWORD CHddObj::WriteDirToBuf(BYTE* buffer, DWORD) const {
  return WriteDirToBuf(std::span(buffer, GetDirSize()));
}

DWORD CHddObj::WriteDirToBuf(std::span<BYTE> buffer) const {
  if (buffer.size() < GetDirSize()) return 0;
  ByteWriter writer(buffer);
  writer.Put(static_cast<DWORD>(m_base_dir.size()));
  if (!m_base_dir.empty()) {
    writer.PutText(m_base_dir);
    writer.Put(static_cast<DWORD>(m_database_name.size()));
    writer.PutText(m_database_name);
    writer.Put(static_cast<DWORD>(m_local_dates.size()));
    for (const DWORD date : m_local_dates) writer.Put(date);
  }
  return static_cast<DWORD>(writer.Written());
}

DWORD CHddObj::ReadDirFromBuf(BYTE* buffer, DWORD) {
  return ReadDirFromBuf(std::span<const BYTE>(buffer, UnknownEnd(buffer)));
}

DWORD CHddObj::ReadDirFromBuf(std::span<const BYTE> buffer) {
  ByteReader reader(buffer);
  CString base_dir = reader.TakeText(reader.Get<DWORD>());
  CString database_name;
  CDWordArray dates;
  if (!base_dir.empty()) {
    database_name = reader.TakeText(reader.Get<DWORD>());
    const auto count = reader.Get<DWORD>();
    if (count > reader.Remaining() / sizeof(DWORD)) return 0;
    dates.resize(count);
    for (DWORD& date : dates) date = reader.Get<DWORD>();
  }
  if (!reader.Ok()) return 0;
  m_base_dir = std::move(base_dir);
  m_database_name = std::move(database_name);
  m_local_dates = std::move(dates);
  return static_cast<DWORD>(buffer.size() - reader.Remaining());
}
