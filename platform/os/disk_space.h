// How much room a disk has.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

// Bytes of the disk that `path` is on: available to the caller, in all, and free in all. A drive
// mounted with a quota counts as a disk of that size, on which the files below its directory take
// what they take on the host's disk; it never has more available than the host's disk. 1, or 0 with
// the outputs untouched when the path does not exist.
ZEBX_API int GetDiskFreeSpaceEx(const CString& path, ULONGLONG* available_bytes,
                                ULONGLONG* total_bytes, ULONGLONG* free_bytes);

}  // namespace os
