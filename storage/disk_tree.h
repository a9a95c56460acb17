// The tree of directories on a disk: the names in it, and finding and making them.
#pragma once

#include "platform/framework/types.h"

namespace zebx {

// Folders below the base directory with a directory per day of their own.
inline constexpr char kLocalFolder[] = "Local";
inline constexpr char kRemoteFolder[] = "Remote";
inline constexpr char kPictureFolder[] = "Picture";

// The last level, in the order of tag_ZEBFILETYPE.
inline constexpr const char* kLeafNames[] = {"Video", "Clip", "Alarm", "Picture", "Log", "Face"};

enum class DirectoryIs { kMissing, kThere, kNew };

// An existing directory, or one made now; kMissing when it cannot be made, as where a file is.
DirectoryIs FindOrMakeDirectory(const CString& path);
// The same of a day's directory. A link is none: a listing of days does not count it, and recycling
// leaves it alone.
DirectoryIs FindOrMakeDay(const CString& path);

bool IsDirectory(const CString& path);
bool IsDay(const CString& path);

}  // namespace zebx
