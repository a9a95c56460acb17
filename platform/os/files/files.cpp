#include "platform/os/files/files.h"

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"

namespace os {

int DeleteFile(const CString& path, ULONGLONG* length_bytes) {
  return zebx::CurrentFileSystem().DeleteFile(path, length_bytes) ? 1 : 0;
}

int ReplaceFile(const CString& path, const CString& replacement) {
  try {
    zebx::CurrentFileSystem().Replace(path, replacement);
    return 1;
  } catch (const CFileException&) {
    return 0;
  }
}

}  // namespace os
