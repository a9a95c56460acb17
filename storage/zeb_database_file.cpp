// The life of a database: its disks loaded from the database file, and written back to it.
#include <new>
#include <vector>

#include "platform/framework/archive.h"
#include "platform/framework/file.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/mem_file.h"
#include "storage/database_format.h"
#include "storage/default_disk.h"
#include "storage/disk_path.h"
#include "storage/disk_tree.h"
#include "storage/file_replacement.h"
#include "storage/file_search_info.h"
#include "storage/zeb_database.h"

using namespace zebx;

namespace {

tag_HDDPARAM RecordOf(const CHddObj& disk) {
  return {
      disk.GetReservedSpace(),          disk.IsRecycle(),    disk.GetBaseDir(), disk.GetDbsName1(),
      disk.IsAlarmWhenSpaceNotEnough(), disk.GetAlarmSound()};
}

bool IsMissing(const CFileException& refusal) {
  using Cause = CFileException::Cause;
  return refusal.GetCause() == Cause::kFileNotFound || refusal.GetCause() == Cause::kBadPath;
}

// The archive's own word for a file that is too short, which the disk has no part in.
bool IsEnd(const CFileException& failure) {
  return failure.GetCause() == CFileException::Cause::kGeneric && failure.GetOsError() == 0;
}

}  // namespace

int CZebDatabase::Open(const CString& data_directory, HWND host_window,
                       const CString& database_file, const CString& host_name) {
  m_host_window = host_window;
  m_host_name = host_name;
  m_data_directory = MakeLower(data_directory);
  m_database_file = database_file;
  m_is_file_unread = false;
  LoadFile();
  return m_disks.IsEmpty() ? MakeDefaultDisk() : 1;
}

void CZebDatabase::LoadFile() {
  CFile file;
  CFileException refusal(CFileException::Cause::kGeneric, 0, m_database_file);
  if (file.Open(m_database_file, CFile::kModeRead | CFile::kShareDenyNone, &refusal) == 0) {
    m_is_file_unread = !IsMissing(refusal);
    return;
  }
  try {
    CArchive archive(file, CArchive::Mode::kLoad);
    const DatabaseBeginning beginning = LoadDatabaseBeginning(archive);
    m_working_disk = beginning.m_working_disk;
    for (DWORD i = 0; i < beginning.m_disks; ++i) {
      tag_HDDPARAM record = LoadDiskRecord(archive);
      AppendDisk(&record);
    }
  } catch (const CFileException& failure) {
    // What was loaded before stays.
    m_is_file_unread = !IsEnd(failure);
  } catch (const std::bad_alloc&) {
    m_is_file_unread = true;
  }
}

int CZebDatabase::MakeDefaultDisk() {
  if (!IsDirectory(m_data_directory)) return 0;
  tag_HDDPARAM param = DefaultDiskBelow(m_data_directory);
  const CHddObj* disk = AppendDisk(&param);
  if (disk == nullptr) return 0;
  m_working_disk = disk->GetHDD();
  return 1;
}

void CZebDatabase::Close() {
  if (m_is_choosing) return;
  m_last_search.reset();
  m_refused_disk.reset();
  if (m_disks.IsEmpty()) return;
  Save();
  for (const CObject* disk : m_disks) delete disk;
  m_disks.RemoveAll();
  m_working_disk.clear();
}

int CZebDatabase::Save() {
  if (m_disks.IsEmpty() || m_database_file.empty() || m_is_file_unread) return 0;
  try {
    CMemFile file;
    CArchive archive(file, CArchive::Mode::kStore);
    StoreDatabaseBeginning(archive, {static_cast<DWORD>(m_disks.GetCount()), m_working_disk});
    for (const CObject* disk : m_disks) {
      StoreDiskRecord(archive, RecordOf(*static_cast<const CHddObj*>(disk)));
    }
    archive.Close();
    return ReplaceContents(m_database_file, file.GetBytes()) ? 1 : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}
