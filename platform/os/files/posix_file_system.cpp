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
#include <filesystem>
#include <limits>
#include <utility>

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"
#include "platform/os/files/drives.h"
#include "platform/os/files/posix_disk_space.h"
#include "platform/os/files/posix_error.h"
#include "platform/os/files/posix_files.h"
#include "platform/os/files/reachable_path.h"

using namespace zebx;

namespace {

using Cause = CFileException::Cause;

class PosixFileHandle final : public FileHandle {
 public:
  PosixFileHandle(int descriptor, CString path, bool is_new)
      : m_descriptor(descriptor), m_path(std::move(path)), m_is_new(is_new) {}
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
  bool IsNew() override { return m_is_new; }

  bool IsAlone() override { return m_is_alone; }

  void Resize(ULONGLONG length) override {
    if (ftruncate(m_descriptor, static_cast<off_t>(length)) != 0) Fail();
  }

  bool Reserve(ULONGLONG offset, ULONGLONG bytes) override {
    if (fallocate(m_descriptor, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
                  static_cast<off_t>(bytes)) == 0) {
      return true;
    }
    // A disk that ran full on the way keeps what it has reserved until then.
    try {
      if (errno == ENOSPC || errno == EDQUOT) GiveBackReserve();
    } catch (const CFileException&) {
      // The write that comes next tells what ails the disk.
    }
    return false;
  }

  void Close() override {
    const int descriptor = std::exchange(m_descriptor, -1);
    if (close(descriptor) != 0 && errno != EINTR) Fail();
  }

  // Marks the file as in use, for os::DeleteFile and for exclusive openers. Network file systems
  // refuse an exclusive lock on what is open for reading alone; a shared one keeps it from being
  // deleted. A file system without locks cannot tell, and is used all the same.
  void Lock(bool exclusive) {
    m_is_alone = exclusive && TryLock(LOCK_EX);
    if (!m_is_alone) TryLock(LOCK_SH);
  }

  struct stat Status() {
    struct stat status {};
    if (fstat(m_descriptor, &status) != 0) Fail();
    return status;
  }

 private:
  // False when the file system refuses for another reason than somebody else's lock.
  bool TryLock(int kind) {
    if (flock(m_descriptor, kind | LOCK_NB) == 0) return true;
    if (errno == EWOULDBLOCK) Fail();
    return false;
  }

  // Writes everything, resuming where the system stopped short.
  void WriteVectors(ULONGLONG offset, std::span<iovec> vectors) {
    while (!vectors.empty()) {
      const ssize_t count = pwritev(m_descriptor, vectors.data(), static_cast<int>(vectors.size()),
                                    static_cast<off_t>(offset));
      if (count < 0) {
        if (errno == EINTR) continue;
        Fail();
      }
      if (count == 0) throw CFileException(Cause::kHardIo, 0, m_path);  // it would go on for ever
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
  bool m_is_new;
  ULONGLONG m_length_at_opening = 0;
  bool m_is_alone = false;
};

// Opens a file as seen from a directory. What is only written is opened for reading as well where
// that is allowed, because network file systems lock nothing else.
int OpenDescriptor(int directory, const char* name, const FileOpenMode& mode) {
  // Not blocking, so that a pipe found in place of a file cannot hang a recorder.
  int flags = O_CLOEXEC | O_NONBLOCK;
  if (mode.m_create) flags |= O_CREAT | (mode.m_new ? O_EXCL : 0);
  constexpr mode_t kOpenToTheUmask = 0666;
  const auto open_for = [&](int access) {
    return openat(directory, name, flags | access, kOpenToTheUmask);
  };
  if (!mode.m_write) return open_for(O_RDONLY);
  const int descriptor = open_for(O_RDWR);
  return descriptor < 0 && errno == EACCES && !mode.m_read ? open_for(O_WRONLY) : descriptor;
}

// The same; a file is made only where nothing is, so that it is known whether it is new.
int OpenOrMake(int directory, const char* name, const FileOpenMode& mode, bool& is_new) {
  if (mode.m_create) {
    FileOpenMode making = mode;
    making.m_new = true;
    const int descriptor = OpenDescriptor(directory, name, making);
    is_new = descriptor >= 0;
    if (is_new || mode.m_new || errno != EEXIST) return descriptor;
  }
  return OpenDescriptor(directory, name, mode);
}

// True when the path is a name of the file that `status` describes.
bool LeadsTo(int directory, const char* name, const struct stat& status) {
  struct stat found {};
  return fstatat(directory, name, &found, 0) == 0 && found.st_dev == status.st_dev &&
         found.st_ino == status.st_ino;
}

// The file as seen from a directory; null when there is none.
std::unique_ptr<FileHandle> OpenAt(int directory, const char* name, const CString& path,
                                   const FileOpenMode& mode) {
  while (true) {
    bool is_new = false;
    const int descriptor = OpenOrMake(directory, name, mode, is_new);
    if (descriptor < 0 && errno == ENOENT) return nullptr;
    if (descriptor < 0) throw CFileException(CauseOf(errno), errno, path);
    auto handle = std::make_unique<PosixFileHandle>(descriptor, path, is_new);
    if (!mode.m_brief) handle->Lock(mode.m_exclusive);
    const struct stat status = handle->Status();
    if (!S_ISREG(status.st_mode)) throw CFileException(Cause::kAccessDenied, 0, path);
    // Deleted between opening and locking: look again.
    if (status.st_nlink == 0 && !LeadsTo(directory, name, status)) continue;
    // Only now, so that a file which somebody holds exclusively keeps its bytes.
    if (mode.m_truncate && status.st_size > 0) handle->Resize(0);
    handle->SetLengthAtOpening(mode.m_truncate ? 0 : static_cast<ULONGLONG>(status.st_size));
    return handle;
  }
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

Directory OpenHostDirectory(const CString& host_path) {
  const ReachablePath path(host_path);
  const int descriptor =
      openat(path.Directory(), path.Name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  Directory directory(fdopendir(descriptor));
  if (directory == nullptr) close(descriptor);
  return directory;
}

bool IsDirectory(DIR* directory, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status {};
  return fstatat(dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

class PosixDirectoryHandle final : public DirectoryHandle {
 public:
  explicit PosixDirectoryHandle(Directory directory) : m_directory(std::move(directory)) {}

  bool List(const DirectoryVisitor& visit) override {
    rewinddir(m_directory.get());
    errno = 0;  // the end and a failure look alike but for it
    while (const dirent* entry = readdir(m_directory.get())) {
      visit(entry->d_name, IsDirectory(m_directory.get(), *entry));
      errno = 0;
    }
    return errno == 0;
  }

  std::unique_ptr<FileHandle> Open(const CString& name, const FileOpenMode& mode) override {
    auto handle = OpenAt(dirfd(m_directory.get()), name.c_str(), name, mode);
    if (handle == nullptr) throw CFileException(Cause::kFileNotFound, ENOENT, name);
    return handle;
  }

 private:
  Directory m_directory;
};

DWORD SecondsSince1970(time_t seconds) {
  return static_cast<DWORD>(std::clamp<LONGLONG>(seconds, 0, std::numeric_limits<DWORD>::max()));
}

// What a path leads to when every link on the way is followed, also one to nothing.
CString FollowLinks(const CString& host_path) {
  namespace fs = std::filesystem;
  constexpr int kMaxLinks = 40;  // as many as the system follows
  std::error_code error;
  fs::path path = host_path;
  for (int link = 0; link < kMaxLinks; ++link) {
    const fs::path real = fs::weakly_canonical(path, error);
    if (error) return host_path;
    const fs::path target = fs::read_symlink(real, error);
    if (error) return real.string();
    path = real.parent_path() / target;
  }
  return host_path;
}

class PosixFileSystem final : public FileSystem {
 public:
  std::unique_ptr<FileHandle> Open(const CString& path, const FileOpenMode& mode) override {
    // A look for other spellings is left until there is no such file, unless that would make one.
    auto handle =
        OpenHostFile(mode.m_create ? os::HostPath(path) : os::SpelledHostPath(path), path, mode);
    if (handle == nullptr && !mode.m_create) handle = OpenHostFile(os::HostPath(path), path, mode);
    if (handle == nullptr) throw CFileException(Cause::kFileNotFound, ENOENT, path);
    return handle;
  }

  std::unique_ptr<DirectoryHandle> OpenDirectory(const CString& path) override {
    const auto host_path = os::HostPath(path);
    auto directory = host_path ? OpenHostDirectory(*host_path) : nullptr;
    if (directory == nullptr) return nullptr;
    return std::make_unique<PosixDirectoryHandle>(std::move(directory));
  }

  CString FullPath(const CString& path) override { return os::FullPath(path); }

  bool List(const CString& path, const DirectoryVisitor& visit) override {
    const auto directory = OpenDirectory(path);
    return directory != nullptr && directory->List(visit);
  }

  std::optional<FileStatus> Status(const CString& path) override { return StatusOf(path, 0); }

  std::optional<FileStatus> LinkStatus(const CString& path) override {
    return StatusOf(path, AT_SYMLINK_NOFOLLOW);
  }

  bool IsSameFile(const CString& path, const CString& other) override {
    const auto host_path = os::HostPath(path);
    const auto other_host_path = os::HostPath(other);
    struct stat status {};
    return host_path && other_host_path && stat(host_path->c_str(), &status) == 0 &&
           LeadsTo(AT_FDCWD, other_host_path->c_str(), status);
  }

  std::optional<CString> RealPath(const CString& path) override {
    const auto host_path = os::HostPath(path);
    return host_path ? std::optional(FollowLinks(*host_path)) : std::nullopt;
  }

  bool MakeDirectory(const CString& path) override {
    const auto host_path = os::HostPath(path);
    if (!host_path) return false;
    constexpr mode_t kOpenToTheUmask = 0777;
    const ReachablePath reached(*host_path);
    return mkdirat(reached.Directory(), reached.Name(), kOpenToTheUmask) == 0;
  }

  bool RemoveDirectory(const CString& path) override {
    const auto host_path = os::HostPath(path);
    if (!host_path || os::IsDriveRoot(path)) return false;
    const ReachablePath reached(*host_path);
    return unlinkat(reached.Directory(), reached.Name(), AT_REMOVEDIR) == 0;
  }

  bool DeleteFile(const CString& path, ULONGLONG* length_bytes) override {
    const auto host_path = os::HostPath(path);
    return host_path && DeletePosixFile(*host_path, length_bytes);
  }

  void Replace(const CString& path, const CString& replacement) override {
    const auto host_path = RealPath(path);
    const auto host_replacement = os::HostPath(replacement);
    if (!host_path || !host_replacement) {
      throw CFileException(Cause::kBadPath, 0, host_path ? replacement : path);
    }
    ReplacePosixFile(*host_path, *host_replacement);
  }

  std::optional<DiskSpace> Space(const CString& path) override {
    return PosixDiskSpace(*this, path);
  }

 private:
  static std::unique_ptr<FileHandle> OpenHostFile(const std::optional<CString>& host_path,
                                                  const CString& path, const FileOpenMode& mode) {
    if (!host_path) throw CFileException(Cause::kBadPath, 0, path);
    return OpenAt(AT_FDCWD, host_path->c_str(), path, mode);
  }

  static std::optional<FileStatus> StatusOf(const CString& path, int flags) {
    const auto host_path = os::HostPath(path);
    if (!host_path) return std::nullopt;
    const ReachablePath reached(*host_path);
    struct stat status {};
    if (fstatat(reached.Directory(), reached.Name(), &status, flags) != 0) return std::nullopt;
    FileStatus result;
    result.m_is_directory = S_ISDIR(status.st_mode);
    result.m_is_link = S_ISLNK(status.st_mode);
    result.m_is_read_only = (status.st_mode & S_IWUSR) == 0;
    if (S_ISREG(status.st_mode)) result.m_length = static_cast<ULONGLONG>(status.st_size);
    result.m_write_time = SecondsSince1970(status.st_mtime);
    return result;
  }
};

}  // namespace

FileSystem& zebx::NativeFileSystem() {
  // Never destroyed: a host's threads may record after main has ended.
  static PosixFileSystem& file_system = *new PosixFileSystem;
  return file_system;
}
