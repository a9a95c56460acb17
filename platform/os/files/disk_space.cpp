#include "platform/os/files/disk_space.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "platform/os/files/drives.h"

namespace os {
namespace {

// The unit of stat's block count, whatever the disk's own blocks are.
constexpr ULONGLONG kStatBlockBytes = 512;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

Directory OpenDirectory(int parent, const CString& path) {
  const int descriptor =
      openat(parent, path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  Directory directory(fdopendir(descriptor));
  if (directory == nullptr) close(descriptor);
  return directory;
}

// Adds up what a directory tree takes on its disk. Directories wait in a list with their paths, so
// that a deep tree takes neither stack nor descriptors. What vanishes meanwhile is not counted.
class TreeMeasure {
 public:
  ULONGLONG Bytes(const CString& root_path) {
    const int root = open(root_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root < 0) return 0;
    struct stat status {};
    if (fstat(root, &status) == 0) {
      m_device = status.st_dev;
      m_pending.emplace_back(".");
    }
    while (!m_pending.empty()) {
      const CString path = std::exchange(m_pending.back(), {});
      m_pending.pop_back();
      if (const Directory directory = OpenDirectory(root, path)) AddEntries(directory.get(), path);
    }
    close(root);
    return m_bytes;
  }

 private:
  void AddEntries(DIR* directory, const CString& path) {
    while (const dirent* entry = readdir(directory)) {
      const CString name = entry->d_name;
      struct stat status {};
      if (name == "." || name == ".." ||
          fstatat(dirfd(directory), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0 ||
          status.st_dev != m_device) {
        continue;
      }
      if (S_ISDIR(status.st_mode)) {
        m_pending.push_back(path);
        m_pending.back().append("/").append(name);
      } else if (status.st_nlink > 1 && !m_linked.insert(status.st_ino).second) {
        continue;  // counted under another name
      }
      m_bytes += static_cast<ULONGLONG>(status.st_blocks) * kStatBlockBytes;
    }
  }

  dev_t m_device = 0;
  std::vector<CString> m_pending;
  std::set<ino_t> m_linked;  // files of several names
  ULONGLONG m_bytes = 0;
};

struct Space {
  ULONGLONG m_available_bytes;
  ULONGLONG m_total_bytes;
  ULONGLONG m_free_bytes;
};

Space LimitToQuota(const Space& host, ULONGLONG quota_bytes, ULONGLONG taken_bytes) {
  const ULONGLONG left_bytes = quota_bytes - std::min(quota_bytes, taken_bytes);
  return {std::min(host.m_available_bytes, left_bytes), quota_bytes,
          std::min(host.m_free_bytes, left_bytes)};
}

}  // namespace

int GetDiskFreeSpaceEx(const CString& path, ULONGLONG* available_bytes, ULONGLONG* total_bytes,
                       ULONGLONG* free_bytes) {
  const auto host_path = HostPath(path);
  struct statvfs status {};
  if (!host_path || statvfs(host_path->c_str(), &status) != 0) return 0;
  const ULONGLONG unit = status.f_frsize;
  Space space{status.f_bavail * unit, status.f_blocks * unit, status.f_bfree * unit};
  if (const ULONGLONG quota_bytes = GetDriveQuota(path); quota_bytes != 0) {
    const auto root = HostPath(path.substr(0, 2));
    if (!root) return 0;  // unmounted meanwhile
    space = LimitToQuota(space, quota_bytes, TreeMeasure().Bytes(*root));
  }
  *available_bytes = space.m_available_bytes;
  *total_bytes = space.m_total_bytes;
  *free_bytes = space.m_free_bytes;
  return 1;
}

}  // namespace os
