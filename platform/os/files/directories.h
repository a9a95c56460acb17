// Directories by name, in the file system in force.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

// Makes one directory; its parent must exist. 1, or 0 when it exists already or cannot be made.
ZEBX_API int CreateDirectory(const CString& path);

// Removes an empty directory; the root of a drive stays. 1, or 0.
ZEBX_API int RemoveDirectory(const CString& path);

// 1 for an existing directory, 0 for everything else; a drive root counts.
ZEBX_API int IsDirectory(const CString& path);

// 1 for a symbolic link, whatever it leads to.
ZEBX_API int IsSymbolicLink(const CString& path);

}  // namespace os
