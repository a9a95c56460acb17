// Deleting and replacing files by their host paths, behind the file port.
#pragma once

#include "platform/framework/types.h"

namespace zebx {

// As FileSystem::DeleteFile.
bool DeletePosixFile(const CString& host_path, ULONGLONG* length_bytes);

// As FileSystem::Replace, for a `host_path` that is no symbolic link.
void ReplacePosixFile(const CString& host_path, const CString& host_replacement);

}  // namespace zebx
