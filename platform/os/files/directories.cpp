#include "platform/os/files/directories.h"

#include <sys/stat.h>
#include <unistd.h>

#include "platform/os/files/drives.h"

namespace os {
namespace {

constexpr mode_t kOpenToTheUmask = 0777;
constexpr std::size_t kDriveRootLength = 3;  // of "d:\\"

}  // namespace

int CreateDirectory(const CString& path) {
  const auto host_path = HostPath(path);
  return host_path && mkdir(host_path->c_str(), kOpenToTheUmask) == 0 ? 1 : 0;
}

int RemoveDirectory(const CString& path) {
  const auto host_path = HostPath(path);
  if (!host_path) return 0;
  const bool is_drive_root =
      GetDriveType(path) != DriveKind::kNoRoot && FullPath(path).size() == kDriveRootLength;
  return !is_drive_root && rmdir(host_path->c_str()) == 0 ? 1 : 0;
}

int IsDirectory(const CString& path) {
  const auto host_path = HostPath(path);
  struct stat status {};
  return host_path && stat(host_path->c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? 1 : 0;
}

int IsSymbolicLink(const CString& path) {
  const auto host_path = HostPath(path);
  struct stat status {};
  return host_path && lstat(host_path->c_str(), &status) == 0 && S_ISLNK(status.st_mode) ? 1 : 0;
}

}  // namespace os
