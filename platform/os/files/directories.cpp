#include "platform/os/files/directories.h"

#include "platform/framework/file_system.h"

namespace os {

int CreateDirectory(const CString& path) {
  return zebx::CurrentFileSystem().MakeDirectory(path) ? 1 : 0;
}

int RemoveDirectory(const CString& path) {
  return zebx::CurrentFileSystem().RemoveDirectory(path) ? 1 : 0;
}

int IsDirectory(const CString& path) {
  const auto status = zebx::CurrentFileSystem().Status(path);
  return status && status->m_is_directory ? 1 : 0;
}

int IsSymbolicLink(const CString& path) {
  const auto status = zebx::CurrentFileSystem().LinkStatus(path);
  return status && status->m_is_link ? 1 : 0;
}

}  // namespace os
