// The life of a database: its disks loaded from the database file, and written back to it.
#include <new>

#include "platform/framework/archive.h"
#include "platform/framework/file.h"
#include "platform/framework/file_system.h"
#include "platform/os/files/directories.h"
#include "platform/os/files/files.h"
#include "storage/disk_path.h"
#include "storage/file_search_info.h"
#include "storage/hdd_obj.h"
#include "storage/zeb_database.h"

using namespace zebx;

namespace {

constexpr char kDefaultDiskDirectory[] = "\\database";
constexpr DWORD kDefaultReservedMb = 1000;
constexpr char kNewFileSuffix[] = ".new";

tag_HDDPARAM LoadRecord(CArchive& archive) {
  tag_HDDPARAM record;
  archive >> record.m_reserved_mb >> record.m_recycle >> record.m_path >> record.m_database_name >>
      record.m_alarm_when_space_not_enough >> record.m_alarm_sound;
  return record;
}

void StoreRecord(CArchive& archive, const CHddObj& disk) {
  archive << disk.GetReservedSpace() << LONG{disk.IsRecycle()} << disk.GetBaseDir()
          << disk.GetDbsName1() << LONG{disk.IsAlarmWhenSpaceNotEnough()} << disk.GetAlarmSound();
}

// Whether a file could be written in place. One that does not exist tells nothing yet.
bool MayBeWritten(const CString& path) {
  if (!CurrentFileSystem().Status(path)) return true;
  CFile file;
  return file.Open(path, CFile::kModeWrite | CFile::kShareDenyNone) != 0;
}

}  // namespace

int CZebDatabase::Open(const CString& data_directory, HWND host_window,
                       const CString& database_file, const CString& host_name) {
  m_host_window = host_window;
  m_host_name = host_name;
  m_data_directory = MakeLower(data_directory);
  m_database_file = database_file;
  LoadFile();
  return m_disks.IsEmpty() ? MakeDefaultDisk() : 1;
}

void CZebDatabase::LoadFile() {
  CFile file;
  if (file.Open(m_database_file, CFile::kModeRead | CFile::kShareDenyNone) == 0) return;
  try {
    CArchive archive(file, CArchive::Mode::kLoad);
    DWORD records = 0;
    archive >> records >> m_working_disk;
    for (DWORD i = 0; i < records; ++i) {
      tag_HDDPARAM record = LoadRecord(archive);
      AppendDisk(&record);
    }
  } catch (const CFileException&) {
    // What was loaded before stays.
  } catch (const std::bad_alloc&) {
  }
}

int CZebDatabase::MakeDefaultDisk() {
  if (os::IsDirectory(m_data_directory) == 0) return 0;
  tag_HDDPARAM param;
  param.m_reserved_mb = kDefaultReservedMb;
  param.m_recycle = 1;
  param.m_path = m_data_directory + kDefaultDiskDirectory;
  const CHddObj* disk = AppendDisk(&param);
  if (disk == nullptr) return 0;
  m_working_disk = disk->GetHDD();
  return 1;
}

void CZebDatabase::Close() {
  m_last_search.reset();
  m_refused_disk.reset();
  if (m_disks.IsEmpty()) return;
  Save();
  for (const CObject* disk : m_disks) delete disk;
  m_disks.RemoveAll();
  m_working_disk.clear();
}

// Beside the old file and then in its place, so that a failure half-way costs nobody's disk list.
int CZebDatabase::Save() {
  if (m_disks.IsEmpty() || m_database_file.empty() || !MayBeWritten(m_database_file)) return 0;
  const CString new_file = m_database_file + kNewFileSuffix;
  if (WriteFile(new_file) && os::ReplaceFile(m_database_file, new_file) != 0) return 1;
  os::DeleteFile(new_file);
  return 0;
}

bool CZebDatabase::WriteFile(const CString& path) const {
  constexpr UINT kFlags = CFile::kModeCreate | CFile::kModeWrite | CFile::kShareDenyNone;
  try {
    CFile file;
    if (file.Open(path, kFlags) == 0) return false;
    CArchive archive(file, CArchive::Mode::kStore);
    archive << static_cast<DWORD>(m_disks.GetCount()) << m_working_disk;
    for (const CObject* disk : m_disks) StoreRecord(archive, *static_cast<const CHddObj*>(disk));
    archive.Close();
    file.Close();
    return true;
  } catch (const CFileException&) {
  } catch (const std::bad_alloc&) {
  }
  return false;
}
