#include "platform/framework/file_system.h"

#include <atomic>
#include <utility>

#include "platform/framework/directory_listing.h"

namespace zebx {
namespace {

std::atomic<FileSystem*> replaced_file_system = nullptr;

// A directory that is opened anew by its path each time.
class NamedDirectory final : public DirectoryHandle {
 public:
  NamedDirectory(FileSystem& file_system, CString path)
      : m_file_system(file_system), m_path(std::move(path)) {}

  bool List(const DirectoryVisitor& visit) override { return m_file_system.List(m_path, visit); }
  std::unique_ptr<FileHandle> Open(const CString& name, const FileOpenMode& mode) override {
    return m_file_system.Open(PathInside(m_path, name), mode);
  }

 private:
  FileSystem& m_file_system;
  CString m_path;
};

}  // namespace

FileHandle::~FileHandle() = default;
FileSystem::~FileSystem() = default;
DirectoryHandle::~DirectoryHandle() = default;

std::unique_ptr<DirectoryHandle> FileSystem::OpenDirectory(const CString& path) {
  const auto status = Status(path);
  if (!status || !status->m_is_directory) return nullptr;
  return std::make_unique<NamedDirectory>(*this, path);
}

FileSystem& CurrentFileSystem() {
  FileSystem* replaced = replaced_file_system.load(std::memory_order_acquire);
  return replaced != nullptr ? *replaced : NativeFileSystem();
}

void SetFileSystem(FileSystem* file_system) {
  replaced_file_system.store(file_system, std::memory_order_release);
}

}  // namespace zebx
