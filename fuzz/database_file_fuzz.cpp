// Arbitrary bytes as a database file: whatever can be made of it is loaded, and written in a form
// that gives the same disks again.
#include <cstdlib>

#include "fuzz/sparse_disk.h"
#include "platform/os/files/drives.h"
#include "storage/hdd_obj.h"
#include "storage/zeb_database.h"

namespace {

constexpr char kFile[] = "zebx-fuzz-list";

void MountDrives() {
  for (char letter = 'a'; letter <= 'z'; ++letter) os::UnmountDrive(letter);
  os::MountDrive('d', "/d", os::DriveKind::kFixed);
  os::MountDrive('e', "/e", os::DriveKind::kNetwork);
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

void LoadAndSave(const SparseBytes& bytes) {
  SparseDisk disk;
  disk.PutSparse(kFile, bytes);
  CZebDatabase database;
  if (database.Open("", nullptr, kFile, "rec") == 0) return;
  if (database.Save() == 0) return;
  CZebDatabase again;
  if (again.Open("", nullptr, kFile, "rec") == 0 || DisksOf(again) != DisksOf(database)) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  MountDrives();
  LoadAndSave(SparseBytes::Of({data, size}));
  return 0;
}
