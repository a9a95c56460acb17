#include "storage/tree_deletion.h"

#include <optional>

#include "platform/framework/file_system.h"
#include "platform/framework/tree_walk.h"
#include "platform/os/files/drives.h"

namespace zebx {
namespace {

// The path by which the tree is walked; nothing for what is never deleted.
std::optional<CString> TreeAt(const CString& directory) {
  if (os::GetDriveType(directory) == os::DriveKind::kNoRoot || os::IsDriveRoot(directory)) {
    return std::nullopt;
  }
  const auto status = CurrentFileSystem().LinkStatus(directory);
  if (!status || !status->m_is_directory) return std::nullopt;
  return CurrentFileSystem().RealPath(directory);
}

class Deletion final : public TreeVisitor {
 public:
  explicit Deletion(DWORD& freed_bytes) : m_freed_bytes(freed_bytes) {}

  bool VisitFile(const CString& path) override {
    ULONGLONG length_bytes = 0;
    if (!CurrentFileSystem().DeleteFile(path, &length_bytes)) return false;
    m_freed_bytes += static_cast<DWORD>(length_bytes);
    return true;
  }
  bool Leave(const CString& directory) override {
    return CurrentFileSystem().RemoveDirectory(directory);
  }

 private:
  DWORD& m_freed_bytes;
};

class Forecast final : public TreeVisitor {
 public:
  bool VisitFile(const CString& path) override {
    if (const auto status = CurrentFileSystem().LinkStatus(path)) m_bytes += status->m_length;
    return true;
  }

  ULONGLONG Bytes() const { return m_bytes; }

 private:
  ULONGLONG m_bytes = 0;
};

}  // namespace

bool DeleteTree(const CString& directory, DWORD& freed_bytes) {
  freed_bytes = 0;
  const auto tree = TreeAt(directory);
  if (!tree) return false;
  Deletion deletion(freed_bytes);
  return WalkTree(CurrentFileSystem(), *tree, deletion);
}

ULONGLONG BytesFreedByDeletingTree(const CString& directory) {
  Forecast forecast;
  if (const auto tree = TreeAt(directory)) WalkTree(CurrentFileSystem(), *tree, forecast);
  return forecast.Bytes();
}

}  // namespace zebx
