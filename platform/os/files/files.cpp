#include "platform/os/files/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/os/files/drives.h"

namespace os {

namespace {

// Whoever has the file open through CFile holds a shared lock; a newcomer that locks after us finds
// the file unlinked and looks again.
bool DeleteUnlessInUse(const CString& host_path) {
  const int descriptor = open(host_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
  if (descriptor < 0) return false;
  const bool in_use = flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  const bool deleted = !in_use && unlink(host_path.c_str()) == 0;
  close(descriptor);
  return deleted;
}

}  // namespace

int DeleteFile(const CString& path, ULONGLONG* length_bytes) {
  const auto host_path = HostPath(path);
  struct stat status {};
  if (!host_path || lstat(host_path->c_str(), &status) != 0) return 0;
  ULONGLONG length = 0;
  if (S_ISLNK(status.st_mode)) {
    if (unlink(host_path->c_str()) != 0) return 0;
  } else {
    if (!S_ISREG(status.st_mode) || (status.st_mode & S_IWUSR) == 0) return 0;
    if (!DeleteUnlessInUse(*host_path)) return 0;
    length = static_cast<ULONGLONG>(status.st_size);
  }
  if (length_bytes != nullptr) *length_bytes = length;
  return 1;
}

int ReplaceFile(const CString& path, const CString& replacement) {
  const auto host_path = HostPath(path);
  const auto host_replacement = HostPath(replacement);
  if (!host_path || !host_replacement) return 0;
  // The bytes first: a disk may write the name down before what it names.
  const int descriptor = open(host_replacement->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return 0;
  const bool is_safe = fsync(descriptor) == 0;
  close(descriptor);
  return is_safe && std::rename(host_replacement->c_str(), host_path->c_str()) == 0 ? 1 : 0;
}

}  // namespace os
