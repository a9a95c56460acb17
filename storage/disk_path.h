// How paths on a disk are spelled: lower case, and the drive root that tells disks apart.
#pragma once

#include <algorithm>

#include "platform/framework/types.h"

namespace zebx {

// The length of a drive root such as d:\.
inline constexpr std::size_t kDriveRootChars = 3;

// Letters outside of ASCII stay.
inline CString MakeLower(CString text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return text;
}

// The path's first three characters; empty when it is shorter.
inline CString DriveRoot(const CString& path) {
  return path.size() < kDriveRootChars ? CString() : path.substr(0, kDriveRootChars);
}

}  // namespace zebx
