// Arbitrary text as a list of drives, up to its first line break, and as paths on those drives in
// the lines behind it: a list is taken whole or not at all, and no path leaves its drive.
#include <cstdlib>
#include <sstream>
#include <string>

#include "platform/os/files/drives.h"

namespace {

constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz";

void Require(bool condition) {
  if (!condition) std::abort();
}

CString RootOf(char letter) {
  return CString(1, letter) + ":\\";
}

void FollowPath(const CString& path) {
  const auto below = os::SpelledHostPath(path);
  const bool has_drive = os::GetDriveType(path) != os::DriveKind::kNoRoot;
  if (!below || !has_drive) return;
  const auto root = os::SpelledHostPath(path.substr(0, 2));
  Require(root && below->starts_with(*root));
  Require(("/" + below->substr(root->size()) + "/").find("/../") == CString::npos);
  // The absolute form is the same place.
  Require(os::SpelledHostPath(os::FullPath(path)) == below);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  std::istringstream lines(std::string(data, data + size));
  CString list;
  std::getline(lines, list);
  for (const char* letter = kLetters; *letter != '\0'; ++letter) os::UnmountDrive(*letter);
  const bool is_taken = os::MountDrives(list) != 0;
  for (const char* letter = kLetters; *letter != '\0'; ++letter) {
    const bool is_mounted = os::GetDriveType(RootOf(*letter)) != os::DriveKind::kNoRoot;
    Require(is_mounted ? is_taken : os::GetDriveQuota(RootOf(*letter)) == 0);
  }
  for (CString path; std::getline(lines, path);) FollowPath(path);
  return 0;
}
