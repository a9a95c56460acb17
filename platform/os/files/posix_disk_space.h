// The room on the host's disks, and on drives with a quota.
#pragma once

#include <optional>

#include "platform/framework/file_system.h"

namespace zebx {

// As FileSystem::Space. A drive with a quota is a disk of that size, on which everything below its
// directory takes what it takes on the host's disk: the tree is walked through `file_system`.
std::optional<DiskSpace> PosixDiskSpace(FileSystem& file_system, const CString& path);

}  // namespace zebx
