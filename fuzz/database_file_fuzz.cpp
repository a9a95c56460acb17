// Arbitrary bytes as a database file: whatever can be made of it is loaded, and written in a form
// that gives the same disks again.
#include <cstdlib>

#include "platform/os/files/drives.h"
#include "storage/hdd_obj.h"
#include "storage/zeb_database.h"
#include "tests/support/memory_file_system.h"

namespace {

constexpr char kFile[] = "zebx-fuzz-list";

// Only the roots of these drives are disks: below them nothing exists and nothing can be made.
void MountDrives() {
  for (char letter = 'a'; letter <= 'z'; ++letter) os::UnmountDrive(letter);
  os::MountDrive('d', "/nonexistent/d", os::DriveKind::kFixed);
  os::MountDrive('e', "/nonexistent/e", os::DriveKind::kNetwork);
}

std::vector<CString> DisksOf(const CZebDatabase& database) {
  std::vector<CString> disks;
  for (const CObject* entry : database.GetHDDs()) {
    const auto& disk = static_cast<const CHddObj&>(*entry);
    disks.push_back(disk.GetBaseDir() + disk.GetDbsName() + disk.GetAlarmSound() +
                    std::to_string(disk.GetReservedSpace()) + std::to_string(disk.IsRecycle()));
  }
  return disks;
}

void LoadAndSave(const std::string& bytes) {
  MemoryFileSystem disk;
  disk.Put(kFile, bytes);
  CZebDatabase database;
  if (database.Open("", nullptr, kFile, "rec") == 0) return;
  // A disk in memory cannot put a file in another's place, so the new file stays beside it.
  database.Save();
  disk.Put(kFile, disk.Get(CString(kFile) + ".new"));
  CZebDatabase again;
  if (again.Open("", nullptr, kFile, "rec") == 0 || DisksOf(again) != DisksOf(database)) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  MountDrives();
  const std::string bytes(data, data + size);
  LoadAndSave(bytes);
  // Behind a good beginning, and as what follows the path of a disk.
  const std::string beginning(
      "\xFF\xFF\xFF\xFF\x03"
      "d:\\",
      8);
  LoadAndSave(beginning + bytes);
  LoadAndSave(beginning +
              std::string("\x01\0\0\0\x01\0\0\0\x03"
                          "e:\\",
                          12) +
              bytes);
  return 0;
}
