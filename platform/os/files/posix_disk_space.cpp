#include "platform/os/files/posix_disk_space.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <set>

#include "platform/framework/tree_walk.h"
#include "platform/os/files/drives.h"
#include "platform/os/files/reachable_path.h"

namespace zebx {
namespace {

// The unit of stat's block count, whatever the disk's own blocks are.
constexpr ULONGLONG kStatBlockBytes = 512;

// What an entry takes on its disk. Room that is reserved behind the end of a file does not count:
// its writer gives it back.
ULONGLONG TakenBytes(const struct stat& status) {
  const ULONGLONG blocks_bytes = static_cast<ULONGLONG>(status.st_blocks) * kStatBlockBytes;
  if (!S_ISREG(status.st_mode) || status.st_blksize <= 0) return blocks_bytes;
  const auto unit = static_cast<ULONGLONG>(status.st_blksize);
  return std::min(blocks_bytes, (static_cast<ULONGLONG>(status.st_size) + unit - 1) / unit * unit);
}

// Adds up what a directory tree takes on its disk. What vanishes meanwhile is not counted, nor are
// other disks mounted below.
class TreeMeasure final : public TreeVisitor {
 public:
  bool Enter(const CString& directory) override { return Add(directory); }
  bool VisitFile(const CString& path) override {
    Add(path);
    return true;
  }
  bool PassOverUnreadable(const CString&) override { return true; }

  ULONGLONG Bytes() const { return m_bytes; }

 private:
  // Whether the entry is on the tree's disk.
  bool Add(const CString& host_path) {
    const ReachablePath path(host_path);
    struct stat status {};
    if (fstatat(path.Directory(), path.Name(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
    if (!m_has_root) {
      // The drive's own directory is not counted: an empty drive has its whole quota left.
      m_has_root = true;
      m_device = status.st_dev;
      return true;
    }
    if (status.st_dev != m_device) return false;
    const bool is_counted_elsewhere =
        !S_ISDIR(status.st_mode) && status.st_nlink > 1 && !m_linked.insert(status.st_ino).second;
    if (!is_counted_elsewhere) m_bytes += TakenBytes(status);
    return true;
  }

  bool m_has_root = false;
  dev_t m_device = 0;
  std::set<ino_t> m_linked;  // files of several names
  ULONGLONG m_bytes = 0;
};

DiskSpace LimitToQuota(const DiskSpace& host, ULONGLONG quota_bytes, ULONGLONG taken_bytes) {
  const ULONGLONG left_bytes = quota_bytes - std::min(quota_bytes, taken_bytes);
  return {std::min(host.m_available_bytes, left_bytes), quota_bytes,
          std::min(host.m_free_bytes, left_bytes)};
}

}  // namespace

std::optional<DiskSpace> PosixDiskSpace(FileSystem& file_system, const CString& path) {
  const auto host_path = os::HostPath(path);
  struct statvfs status {};
  if (!host_path || statvfs(host_path->c_str(), &status) != 0) return std::nullopt;
  const ULONGLONG unit = status.f_frsize;
  const DiskSpace host{status.f_bavail * unit, status.f_blocks * unit, status.f_bfree * unit};
  const ULONGLONG quota_bytes = os::GetDriveQuota(path);
  if (quota_bytes == 0) return host;
  const auto root = file_system.RealPath(path.substr(0, 2));
  if (!root) return std::nullopt;  // unmounted meanwhile
  TreeMeasure measure;
  WalkTree(file_system, *root, measure);
  return LimitToQuota(host, quota_bytes, measure.Bytes());
}

}  // namespace zebx
