#include "platform/os/files/disk_space.h"

#include "platform/framework/file_system.h"

namespace os {

int GetDiskFreeSpaceEx(const CString& path, ULONGLONG* available_bytes, ULONGLONG* total_bytes,
                       ULONGLONG* free_bytes) {
  const auto space = zebx::CurrentFileSystem().Space(path);
  if (!space) return 0;
  *available_bytes = space->m_available_bytes;
  *total_bytes = space->m_total_bytes;
  *free_bytes = space->m_free_bytes;
  return 1;
}

}  // namespace os
