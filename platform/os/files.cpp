#include "platform/os/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/os/drives.h"

namespace os {

int DeleteFile(const CString& path) {
  const auto host_path = HostPath(path);
  if (!host_path) return 0;
  struct stat status {};
  if (stat(host_path->c_str(), &status) != 0) return 0;
  if (!S_ISREG(status.st_mode) || (status.st_mode & S_IWUSR) == 0) return 0;

  // Whoever has it open through CFile holds a shared lock; a newcomer that locks after us finds the
  // file unlinked and looks again.
  const int descriptor = open(host_path->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return 0;
  const bool in_use = flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  const bool deleted = !in_use && unlink(host_path->c_str()) == 0;
  close(descriptor);
  return deleted ? 1 : 0;
}

}  // namespace os
