#include "platform/os/files/posix_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "platform/os/files/posix_error.h"
#include "platform/os/files/reachable_path.h"

namespace zebx {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
  ~Descriptor() {
    if (m_descriptor >= 0) close(m_descriptor);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool IsOpen() const { return m_descriptor >= 0; }
  int Get() const { return m_descriptor; }

 private:
  int m_descriptor;
};

// For writing, because network file systems refuse an exclusive lock on what is open for reading
// alone. Another user's file may be opened for reading only; other file systems lock that as well.
int OpenToLock(const ReachablePath& path) {
  const auto open_for = [&path](int access) {
    return openat(path.Directory(), path.Name(), access | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
  };
  const int descriptor = open_for(O_RDWR);
  return descriptor < 0 && errno == EACCES ? open_for(O_RDONLY) : descriptor;
}

// Whoever has the file open through CFile holds a shared lock; a newcomer that locks after us finds
// the file unlinked and looks again. Whatever a lock is refused for, the refusal is no sign that
// nobody has the file open.
bool DeleteUnlessInUse(const ReachablePath& path) {
  const Descriptor file(OpenToLock(path));
  return file.IsOpen() && flock(file.Get(), LOCK_EX | LOCK_NB) == 0 &&
         unlinkat(path.Directory(), path.Name(), 0) == 0;
}

// What leads elsewhere or holds nothing itself.
bool IsWithoutBytes(mode_t mode) {
  return S_ISLNK(mode) || S_ISFIFO(mode) || S_ISSOCK(mode);
}

[[noreturn]] void Fail(const CString& path) {
  throw CFileException(CauseOf(errno), errno, path);
}

// Gives the new file the mode and the owner of the one whose place it takes.
void TakeOver(const struct stat& old, int replacement, const CString& path) {
  struct stat status {};
  if (fstat(replacement, &status) != 0) Fail(path);
  const bool is_same_owner = status.st_uid == old.st_uid && status.st_gid == old.st_gid;
  if (!is_same_owner && fchown(replacement, old.st_uid, old.st_gid) != 0) Fail(path);
  if (fchmod(replacement, old.st_mode & static_cast<mode_t>(ALLPERMS)) != 0) Fail(path);
}

// So that the new name outlives a power failure. A disk that cannot do that has the old one.
void FlushDirectoryOf(const CString& host_path) {
  const CString parent = std::filesystem::path(host_path).parent_path().string();
  const Descriptor directory(
      open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.IsOpen()) fsync(directory.Get());
}

}  // namespace

bool DeletePosixFile(const CString& host_path, ULONGLONG* length_bytes) {
  const ReachablePath path(host_path);
  struct stat status {};
  if (fstatat(path.Directory(), path.Name(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
  ULONGLONG length = 0;
  if (IsWithoutBytes(status.st_mode)) {
    if (unlinkat(path.Directory(), path.Name(), 0) != 0) return false;
  } else {
    if (!S_ISREG(status.st_mode) || (status.st_mode & S_IWUSR) == 0) return false;
    if (!DeleteUnlessInUse(path)) return false;
    length = static_cast<ULONGLONG>(status.st_size);
  }
  if (length_bytes != nullptr) *length_bytes = length;
  return true;
}

void ReplacePosixFile(const CString& host_path, const CString& host_replacement) {
  const Descriptor replacement(
      open(host_replacement.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
  if (!replacement.IsOpen()) Fail(host_replacement);
  struct stat old {};
  if (lstat(host_path.c_str(), &old) == 0) {
    TakeOver(old, replacement.Get(), host_path);
  } else if (errno != ENOENT) {
    Fail(host_path);
  }
  // The bytes first: a disk may write the name down before what it names.
  if (fsync(replacement.Get()) != 0) Fail(host_replacement);
  if (std::rename(host_replacement.c_str(), host_path.c_str()) != 0) Fail(host_path);
  FlushDirectoryOf(host_path);
}

}  // namespace zebx
