// The entries of one directory, in the order in which everybody walks them.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/framework/file_system.h"
#include "platform/framework/types.h"

namespace zebx {

// "." or "..".
bool IsDotName(std::string_view name);

// Every entry, "." and ".." first, then by name without regard to case; bytes from 0x80 come behind
// ASCII. Nothing when the directory cannot be read to its end.
std::optional<std::vector<DirectoryEntry>> ListByName(FileSystem& file_system,
                                                      const CString& directory);
std::optional<std::vector<DirectoryEntry>> ListByName(DirectoryHandle& directory);

// The path of a name inside a directory, with one separator between them: a backslash on a drive,
// else a slash.
CString PathInside(const CString& directory, std::string_view name);

}  // namespace zebx
