// A drive of a test's own.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/os/files/drives.h"
#include "tests/support/temp_dir.h"

// The drive d: on an empty directory, for as long as the object lives.
class TestDrive : public TempDir {
 public:
  explicit TestDrive(ULONGLONG quota_bytes = 0) {
    os::MountDrive('d', Root(), os::DriveKind::kFixed, quota_bytes);
  }
  ~TestDrive() { os::UnmountDrive('d'); }

  std::string Root() const { return Path().string(); }
  bool Has(std::string_view name) const { return std::filesystem::exists(Path() / name); }
  // Makes or replaces a file.
  void MakeFile(std::string_view name, std::string_view bytes = "x") const {
    WriteWholeFile(File(name), bytes);
  }
  // Makes a directory and those above it.
  void MakeDirectory(std::string_view name) const {
    std::filesystem::create_directories(Path() / name);
  }
};
