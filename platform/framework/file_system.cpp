#include "platform/framework/file_system.h"

#include <atomic>

namespace zebx {
namespace {

std::atomic<FileSystem*> replaced_file_system = nullptr;

}  // namespace

FileHandle::~FileHandle() = default;
FileSystem::~FileSystem() = default;

FileSystem& CurrentFileSystem() {
  FileSystem* replaced = replaced_file_system.load(std::memory_order_acquire);
  return replaced != nullptr ? *replaced : NativeFileSystem();
}

void SetFileSystem(FileSystem* file_system) {
  replaced_file_system.store(file_system, std::memory_order_release);
}

}  // namespace zebx
