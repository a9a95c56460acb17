// The disk object's free space.
#include "platform/os/files/disk_space.h"
#include "storage/hdd_obj.h"

namespace {

constexpr std::size_t kMinPathChars = 2;
constexpr int kBytesToMbShift = 20;

DWORD Megabytes(ULONGLONG bytes) {
  return static_cast<DWORD>(bytes >> kBytesToMbShift);
}

}  // namespace

int CHddObj::GetHDDSpace(const CString& path, DWORD& total, DWORD& used, DWORD& free) {
  if (path.size() < kMinPathChars) return 0;
  ULONGLONG available_bytes = 0;
  ULONGLONG total_bytes = 0;
  ULONGLONG free_bytes = 0;
  if (os::GetDiskFreeSpaceEx(path, &available_bytes, &total_bytes, &free_bytes) == 0) return 0;
  // What the caller may not use counts as used, although it is free for others.
  total = Megabytes(total_bytes);
  used = Megabytes(total_bytes - available_bytes);
  free = Megabytes(available_bytes);
  return 1;
}

int CHddObj::GetHDDSpace(DWORD& total, DWORD& used, DWORD& free) const {
  return GetHDDSpace(m_base_dir, total, used, free);
}
