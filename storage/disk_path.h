// How paths on a disk are spelled: lower case, and the drive root that tells disks apart.
#pragma once

#include <algorithm>

#include "platform/framework/letter_case.h"
#include "platform/framework/types.h"

namespace zebx {

inline CString MakeLower(CString text) {
  std::transform(text.begin(), text.end(), text.begin(), LowerCase);
  return text;
}

// The path's first three characters, such as d:\, with a backslash also where a slash stands: both
// are one drive. Empty when the path is shorter.
inline CString DriveRoot(const CString& path) {
  constexpr std::size_t kRootChars = 3;
  if (path.size() < kRootChars) return {};
  CString root = path.substr(0, kRootChars);
  if (root.back() == '/') root.back() = '\\';
  return root;
}

}  // namespace zebx
