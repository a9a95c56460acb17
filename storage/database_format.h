// The database file: how many disks there are, the working disk, and a record for each disk. See
// docs/storage.md.
#pragma once

#include "platform/framework/archive.h"
#include "storage/hdd_obj.h"

namespace zebx {

struct DatabaseBeginning {
  DWORD m_disks = 0;
  CString m_working_disk;  // a drive root
};

// Each of these throws CFileException where the archive does.

inline DatabaseBeginning LoadDatabaseBeginning(CArchive& archive) {
  DatabaseBeginning beginning;
  archive >> beginning.m_disks >> beginning.m_working_disk;
  return beginning;
}

inline void StoreDatabaseBeginning(CArchive& archive, const DatabaseBeginning& beginning) {
  archive << beginning.m_disks << beginning.m_working_disk;
}

// The name is the plain one, without the drive.
inline tag_HDDPARAM LoadDiskRecord(CArchive& archive) {
  tag_HDDPARAM disk;
  archive >> disk.m_reserved_mb >> disk.m_recycle >> disk.m_path >> disk.m_database_name >>
      disk.m_alarm_when_space_not_enough >> disk.m_alarm_sound;
  return disk;
}

inline void StoreDiskRecord(CArchive& archive, const tag_HDDPARAM& disk) {
  archive << disk.m_reserved_mb << LONG{disk.m_recycle} << disk.m_path << disk.m_database_name
          << LONG{disk.m_alarm_when_space_not_enough} << disk.m_alarm_sound;
}

}  // namespace zebx
