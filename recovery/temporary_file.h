// Files beside the place that they will take.
#pragma once

#include <optional>
#include <string_view>

#include "platform/framework/types.h"

namespace zebx {

// The extension of temporary names; a number follows it. Searches never show such files.
inline constexpr std::string_view kTemporaryExtension = ".recovery";

// Whether a path is such a name.
bool IsTemporaryName(std::string_view path);

// Makes an empty file. False when it cannot be made, or anything is there already.
bool MakeNewFile(const CString& path);

// Makes an empty file beside `path` under a name that nobody uses, and returns its path; nothing
// when a hundred such names are taken. Throws CFileException when it cannot be made.
std::optional<CString> MakeTemporaryFile(const CString& path);

}  // namespace zebx
