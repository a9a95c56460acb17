// The host's files behind the framework's file port.
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <utility>

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"
#include "platform/os/files/drives.h"

using namespace zebx;

namespace {

using Cause = CFileException::Cause;

Cause CauseOf(int os_error) {
  switch (os_error) {
    case ENOENT:
      return Cause::kFileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return Cause::kBadPath;
    case EMFILE:
    case ENFILE:
      return Cause::kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ETXTBSY:
      return Cause::kAccessDenied;
    case EWOULDBLOCK:
      return Cause::kSharingViolation;
    case EIO:
      return Cause::kHardIo;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return Cause::kDiskFull;
    default:
      return Cause::kGeneric;
  }
}

class PosixFileHandle final : public FileHandle {
 public:
  PosixFileHandle(int descriptor, CString path)
      : m_descriptor(descriptor), m_path(std::move(path)) {}
  ~PosixFileHandle() override {
    if (m_descriptor >= 0) close(m_descriptor);
  }
  PosixFileHandle(const PosixFileHandle&) = delete;
  PosixFileHandle& operator=(const PosixFileHandle&) = delete;

  std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) override {
    std::size_t done = 0;
    while (done < into.size()) {
      const ssize_t count = pread(m_descriptor, into.data() + done, into.size() - done,
                                  static_cast<off_t>(offset + done));
      if (count == 0) break;
      if (count > 0) {
        done += static_cast<std::size_t>(count);
      } else if (errno != EINTR) {
        Fail();
      }
    }
    return done;
  }

  void WriteAt(ULONGLONG offset, std::span<const std::span<const BYTE>> pieces) override {
    std::array<iovec, kMaxPieces> vectors{};
    std::size_t count = 0;
    for (const auto& piece : pieces) {
      if (piece.empty()) continue;
      if (count == vectors.size()) throw CFileException(Cause::kGeneric, E2BIG, m_path);
      // The system call only reads through the pointer, though its type does not say so.
      vectors[count++] = {const_cast<BYTE*>(piece.data()), piece.size()};
    }
    WriteVectors(offset, std::span(vectors).first(count));
  }

  ULONGLONG Length() override { return static_cast<ULONGLONG>(Status().st_size); }
  ULONGLONG LengthAtOpening() override { return m_length_at_opening; }
  void SetLengthAtOpening(ULONGLONG length) { m_length_at_opening = length; }

  void Resize(ULONGLONG length) override {
    if (ftruncate(m_descriptor, static_cast<off_t>(length)) != 0) Fail();
  }

  void Close() override {
    const int descriptor = std::exchange(m_descriptor, -1);
    if (close(descriptor) != 0 && errno != EINTR) Fail();
  }

  // Marks the file as in use, for os::DeleteFile and for exclusive openers. A file system without
  // locks cannot tell, and is used all the same.
  void Lock(bool exclusive) {
    if (flock(m_descriptor, (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0 &&
        errno == EWOULDBLOCK) {
      Fail();
    }
  }

  struct stat Status() {
    struct stat status {};
    if (fstat(m_descriptor, &status) != 0) Fail();
    return status;
  }

 private:
  // Writes everything, resuming where the system stopped short.
  void WriteVectors(ULONGLONG offset, std::span<iovec> vectors) {
    while (!vectors.empty()) {
      const ssize_t count = pwritev(m_descriptor, vectors.data(), static_cast<int>(vectors.size()),
                                    static_cast<off_t>(offset));
      if (count < 0) {
        if (errno == EINTR) continue;
        Fail();
      }
      offset += static_cast<ULONGLONG>(count);
      auto written = static_cast<std::size_t>(count);
      while (!vectors.empty() && written >= vectors.front().iov_len) {
        written -= vectors.front().iov_len;
        vectors = vectors.subspan(1);
      }
      if (!vectors.empty()) {
        vectors.front().iov_base = static_cast<BYTE*>(vectors.front().iov_base) + written;
        vectors.front().iov_len -= written;
      }
    }
  }

  [[noreturn]] void Fail() const { throw CFileException(CauseOf(errno), errno, m_path); }

  int m_descriptor;
  CString m_path;
  ULONGLONG m_length_at_opening = 0;
};

int OpenFlags(const FileOpenMode& mode) {
  // Not blocking, so that a pipe found in place of a file cannot hang a recorder.
  int flags = O_CLOEXEC | O_NONBLOCK;
  if (mode.m_write) {
    flags |= mode.m_read ? O_RDWR : O_WRONLY;
  } else {
    flags |= O_RDONLY;
  }
  if (mode.m_create) flags |= O_CREAT;
  return flags;
}

// True when the path is a name of the file that `status` describes.
bool LeadsTo(const CString& host_path, const struct stat& status) {
  struct stat found {};
  return stat(host_path.c_str(), &found) == 0 && found.st_dev == status.st_dev &&
         found.st_ino == status.st_ino;
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

bool IsDirectory(DIR* directory, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status {};
  return fstatat(dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

DWORD SecondsSince1970(time_t seconds) {
  return static_cast<DWORD>(std::clamp<LONGLONG>(seconds, 0, std::numeric_limits<DWORD>::max()));
}

class PosixFileSystem final : public FileSystem {
 public:
  std::unique_ptr<FileHandle> Open(const CString& path, const FileOpenMode& mode) override {
    // A look for other spellings is left until there is no such file, unless that would make one.
    bool looked = mode.m_create;
    auto host_path = looked ? os::HostPath(path) : os::SpelledHostPath(path);
    while (true) {
      if (!host_path) throw CFileException(Cause::kBadPath, 0, path);
      const int descriptor = open(host_path->c_str(), OpenFlags(mode), 0666);
      if (descriptor < 0 && errno == ENOENT && !std::exchange(looked, true)) {
        host_path = os::HostPath(path);
        continue;
      }
      if (descriptor < 0) throw CFileException(CauseOf(errno), errno, path);
      auto handle = std::make_unique<PosixFileHandle>(descriptor, path);
      handle->Lock(mode.m_exclusive);
      const struct stat status = handle->Status();
      if (!S_ISREG(status.st_mode)) throw CFileException(Cause::kAccessDenied, 0, path);
      // Deleted between opening and locking: look again.
      if (status.st_nlink == 0 && !LeadsTo(*host_path, status)) continue;
      // Only now, so that a file which somebody holds exclusively keeps its bytes.
      if (mode.m_truncate && status.st_size > 0) handle->Resize(0);
      handle->SetLengthAtOpening(mode.m_truncate ? 0 : static_cast<ULONGLONG>(status.st_size));
      return handle;
    }
  }

  CString FullPath(const CString& path) override { return os::FullPath(path); }

  bool List(const CString& path, const DirectoryVisitor& visit) override {
    const auto host_path = os::HostPath(path);
    if (!host_path) return false;
    const std::unique_ptr<DIR, CloseDirectory> directory(opendir(host_path->c_str()));
    if (directory == nullptr) return false;
    errno = 0;  // the end and a failure look alike but for it
    while (const dirent* entry = readdir(directory.get())) {
      visit(entry->d_name, IsDirectory(directory.get(), *entry));
      errno = 0;
    }
    return errno == 0;
  }

  std::optional<FileStatus> Status(const CString& path) override {
    const auto host_path = os::HostPath(path);
    struct stat status {};
    if (!host_path || stat(host_path->c_str(), &status) != 0) return std::nullopt;
    FileStatus result;
    result.m_is_directory = S_ISDIR(status.st_mode);
    result.m_is_read_only = (status.st_mode & S_IWUSR) == 0;
    if (!result.m_is_directory) result.m_length = static_cast<ULONGLONG>(status.st_size);
    result.m_write_time = SecondsSince1970(status.st_mtime);
    return result;
  }

  bool IsSameFile(const CString& path, const CString& other) override {
    const auto host_path = os::HostPath(path);
    const auto other_host_path = os::HostPath(other);
    struct stat status {};
    return host_path && other_host_path && stat(host_path->c_str(), &status) == 0 &&
           LeadsTo(*other_host_path, status);
  }
};

}  // namespace

FileSystem& zebx::NativeFileSystem() {
  static PosixFileSystem file_system;
  return file_system;
}
