#include "storage/disk_tree.h"

#include "platform/framework/file_system.h"

namespace zebx {

DirectoryIs FindOrMakeDirectory(const CString& path) {
  if (IsDirectory(path)) return DirectoryIs::kThere;
  return CurrentFileSystem().MakeDirectory(path) ? DirectoryIs::kNew : DirectoryIs::kMissing;
}

DirectoryIs FindOrMakeDay(const CString& path) {
  if (IsDay(path)) return DirectoryIs::kThere;
  return CurrentFileSystem().MakeDirectory(path) ? DirectoryIs::kNew : DirectoryIs::kMissing;
}

bool IsDirectory(const CString& path) {
  const auto status = CurrentFileSystem().Status(path);
  return status && status->m_is_directory;
}

bool IsDay(const CString& path) {
  const auto status = CurrentFileSystem().LinkStatus(path);
  return status && status->m_is_directory;
}

}  // namespace zebx
