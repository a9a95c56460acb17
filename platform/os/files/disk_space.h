// How much room a disk has.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

// Bytes of the disk that `path` is on: available to the caller, in all, and free in all. A drive
// mounted with a quota counts as a disk of that size, on which everything below its directory takes
// what it takes on the host's disk (links are not followed, nor other disks mounted below counted);
// it never has more available than the host's disk. Such a drive is walked on every call: one
// question to the disk for each file. 1, or 0 with the outputs untouched when the path does not
// exist.
ZEBX_API int GetDiskFreeSpaceEx(const CString& path, ULONGLONG* available_bytes,
                                ULONGLONG* total_bytes, ULONGLONG* free_bytes);

}  // namespace os
