// The disk object itself: its identity, its thresholds and space, and its serial forms.
#include "storage/hdd_obj.h"

#include <utility>

#include "platform/framework/archive.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/file_system.h"
#include "platform/os/files/drives.h"
#include "storage/disk_path.h"
#include "storage/disk_tree.h"
#include "storage/space_thresholds.h"

using namespace zebx;

namespace {

constexpr char kDefaultDatabaseName[] = "ZebDatabase";
constexpr std::size_t kMinSpacePathChars = 2;
constexpr int kBytesToMbShift = 20;

bool IsRootOfDisk(const CString& root) {
  if (root.empty() || root.back() != '\\') return false;
  const os::DriveKind kind = os::GetDriveType(root);
  return kind == os::DriveKind::kFixed || kind == os::DriveKind::kNetwork;
}

DWORD Megabytes(ULONGLONG bytes) {
  return static_cast<DWORD>(bytes >> kBytesToMbShift);
}

}  // namespace

IMPLEMENT_DYNAMIC(CHddObj, CObject)

CHddObj::CHddObj()
    : m_database_name(kDefaultDatabaseName),
      m_plain_database_name(kDefaultDatabaseName),
      m_reserved_mb(kDefaultReservedMb),
      m_alarm_mb(AlarmSpaceOf(kDefaultReservedMb)) {}

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
  m_alarm_mb = AlarmSpaceOf(param->m_reserved_mb);
  m_alarm_when_space_not_enough = param->m_alarm_when_space_not_enough;
  m_alarm_sound = param->m_alarm_sound;

  CString path = MakeLower(param->m_path);
  const CString root = DriveRoot(path);
  if (!IsRootOfDisk(root)) return 0;
  path.replace(0, root.size(), root);
  if (path.size() > root.size()) {
    if (path.back() == '\\') path.pop_back();
    if (FindOrMakeDirectory(path) == DirectoryIs::kMissing) return 0;
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

int CHddObj::GetHDDSpace(const CString& path, DWORD& total, DWORD& used, DWORD& free) {
  if (path.size() < kMinSpacePathChars) return 0;
  const auto space = CurrentFileSystem().Space(path);
  if (!space) return 0;
  // What the caller may not use counts as used, although it is free for others.
  total = Megabytes(space->m_total_bytes);
  used = Megabytes(space->m_total_bytes - space->m_available_bytes);
  free = Megabytes(space->m_available_bytes);
  return 1;
}

int CHddObj::GetHDDSpace(DWORD& total, DWORD& used, DWORD& free) const {
  return GetHDDSpace(m_base_dir, total, used, free);
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
