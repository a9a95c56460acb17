// The disk that is made where there is none yet.
#pragma once

#include "storage/hdd_obj.h"
#include "storage/space_thresholds.h"

namespace zebx {

// Below the data directory.
inline constexpr char kDefaultDiskDirectory[] = "database";

inline tag_HDDPARAM DefaultDiskBelow(const CString& data_directory) {
  tag_HDDPARAM disk;
  disk.m_reserved_mb = kDefaultReservedMb;
  disk.m_recycle = 1;
  disk.m_path = data_directory + "\\" + kDefaultDiskDirectory;
  return disk;
}

}  // namespace zebx
