#include "platform/os/files/drives.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <limits>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/framework/letter_case.h"

namespace os {
namespace {

using zebx::EqualsIgnoringCase;
using zebx::LowerCase;

struct Drive {
  CString m_directory;
  DriveKind m_kind = DriveKind::kNoRoot;
  ULONGLONG m_quota_bytes = 0;  // 0 for none
};

constexpr std::size_t kLetters = 26;

struct DriveTable {
  std::mutex m_mutex;
  std::array<Drive, kLetters> m_drives;  // guarded by m_mutex

  DriveTable() { m_drives['c' - 'a'] = {"/", DriveKind::kFixed, 0}; }
};

DriveTable& Table() {
  // Never destroyed: a host's threads may record after main has ended.
  static DriveTable& table = *new DriveTable;
  return table;
}

bool IsLetter(char character) {
  return LowerCase(character) >= 'a' && LowerCase(character) <= 'z';
}

bool HasDriveLetter(const CString& path) {
  return path.size() >= 2 && path[1] == ':' && IsLetter(path[0]);
}

Drive DriveOf(char letter) {
  DriveTable& table = Table();
  const std::lock_guard lock(table.m_mutex);
  return table.m_drives[static_cast<std::size_t>(LowerCase(letter) - 'a')];
}

void SetDrive(char letter, Drive drive) {
  DriveTable& table = Table();
  const std::lock_guard lock(table.m_mutex);
  table.m_drives[static_cast<std::size_t>(LowerCase(letter) - 'a')] = std::move(drive);
}

bool HasZeroByte(const CString& path) {
  return path.find('\0') != CString::npos;
}

// The components of a library path below its drive, `.` and `..` folded. Borrowed from the path.
std::vector<std::string_view> Components(std::string_view path) {
  constexpr std::size_t kUsualDepth = 8;
  std::vector<std::string_view> components;
  components.reserve(kUsualDepth);
  constexpr std::string_view kSeparators = "\\/";
  std::size_t begin = 2;  // behind the letter and the colon
  while (begin <= path.size()) {
    const std::size_t end = std::min(path.find_first_of(kSeparators, begin), path.size());
    const std::string_view component = path.substr(begin, end - begin);
    if (component == "..") {
      if (!components.empty()) components.pop_back();
    } else if (!component.empty() && component != ".") {
      components.push_back(component);
    }
    begin = end + 1;
  }
  return components;
}

// The host path of the components, as they are spelled.
CString Below(const Drive& drive, const std::vector<std::string_view>& components) {
  CString path = drive.m_directory;
  for (const std::string_view component : components) {
    if (path.back() != '/') path += '/';
    path += component;
  }
  return path;
}

// The entry of `directory` that is called `name` but for its case; `name` itself when there is
// none. Of several the first in name order, so that the answer does not depend on the disk's own
// order.
CString FindEntry(const std::filesystem::path& directory, std::string_view name) {
  CString found;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    const CString entry_name = entry->path().filename().string();
    if (EqualsIgnoringCase(entry_name, name) && (found.empty() || entry_name < found)) {
      found = entry_name;
    }
  }
  return found.empty() ? CString(name) : found;
}

// A link is there even when what it leads to is not.
bool Exists(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::symlink_status(path, error).type() !=
         std::filesystem::file_type::not_found;
}

std::optional<DriveKind> ParseKind(std::string_view text) {
  static constexpr std::pair<std::string_view, DriveKind> kKinds[] = {
      {"removable", DriveKind::kRemovable}, {"fixed", DriveKind::kFixed},
      {"network", DriveKind::kNetwork},     {"cdrom", DriveKind::kCdRom},
      {"ramdisk", DriveKind::kRamDisk},
  };
  for (const auto& [name, kind] : kKinds) {
    if (text == name) return kind;
  }
  return std::nullopt;
}

// A number of bytes above 0, with or without a unit.
std::optional<ULONGLONG> ParseQuota(std::string_view text) {
  constexpr std::string_view kUnits = "kmgt";  // each 2^10 times the one before
  unsigned shift = 0;
  if (!text.empty()) {
    if (const std::size_t unit = kUnits.find(LowerCase(text.back())); unit != CString::npos) {
      shift = 10 * static_cast<unsigned>(unit + 1);
      text.remove_suffix(1);
    }
  }
  ULONGLONG count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || end != text.data() + text.size() || count == 0 ||
      count > std::numeric_limits<ULONGLONG>::max() >> shift) {
    return std::nullopt;
  }
  return count << shift;
}

// One entry of a list of mounts: the letter, `=`, the directory, and `:` before each other part.
std::optional<std::pair<char, Drive>> ParseMount(std::string_view entry) {
  if (entry.size() < 3 || entry[1] != '=' || !IsLetter(entry[0])) return std::nullopt;
  std::vector<std::string_view> parts;
  for (std::size_t begin = 2; begin <= entry.size(); begin += parts.back().size() + 1) {
    parts.push_back(entry.substr(begin, entry.find(':', begin) - begin));
  }
  Drive drive{CString(parts[0]), DriveKind::kFixed, 0};
  std::size_t understood = 1;
  if (const auto kind = ParseKind(understood < parts.size() ? parts[understood] : "")) {
    drive.m_kind = *kind;
    ++understood;
  }
  if (const auto quota = ParseQuota(understood < parts.size() ? parts[understood] : "")) {
    drive.m_quota_bytes = *quota;
    ++understood;
  }
  if (drive.m_directory.empty() || understood != parts.size()) return std::nullopt;
  return std::pair{entry[0], std::move(drive)};
}

}  // namespace

int MountDrive(char letter, const CString& host_directory, DriveKind kind, ULONGLONG quota_bytes) {
  if (!IsLetter(letter) || host_directory.empty() || HasZeroByte(host_directory) ||
      kind == DriveKind::kNoRoot) {
    return 0;
  }
  SetDrive(letter, {host_directory, kind, quota_bytes});
  return 1;
}

void UnmountDrive(char letter) {
  if (IsLetter(letter)) SetDrive(letter, {});
}

int MountDrives(const CString& list) {
  std::vector<std::pair<char, Drive>> mounts;
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find(';', begin), list.size());
    auto mount = ParseMount(list.substr(begin, end - begin));
    if (!mount) return 0;
    mounts.push_back(std::move(*mount));
    begin = end + 1;
  }
  for (auto& [letter, drive] : mounts) SetDrive(letter, std::move(drive));
  return 1;
}

DriveKind GetDriveType(const CString& path) {
  return HasDriveLetter(path) ? DriveOf(path[0]).m_kind : DriveKind::kNoRoot;
}

ULONGLONG GetDriveQuota(const CString& path) {
  return HasDriveLetter(path) ? DriveOf(path[0]).m_quota_bytes : 0;
}

bool IsDriveRoot(const CString& path) {
  return GetDriveType(path) != DriveKind::kNoRoot && Components(path).empty();
}

std::optional<CString> SpelledHostPath(const CString& path) {
  if (HasZeroByte(path)) return std::nullopt;
  if (!HasDriveLetter(path)) return path;
  const Drive drive = DriveOf(path[0]);
  if (drive.m_kind == DriveKind::kNoRoot) return std::nullopt;
  return Below(drive, Components(path));
}

std::optional<CString> HostPath(const CString& path) {
  if (HasZeroByte(path)) return std::nullopt;
  if (!HasDriveLetter(path)) return path;
  const Drive drive = DriveOf(path[0]);
  if (drive.m_kind == DriveKind::kNoRoot) return std::nullopt;

  const auto components = Components(path);
  CString spelled = Below(drive, components);
  if (Exists(spelled)) return spelled;

  std::filesystem::path found = drive.m_directory;
  for (const std::string_view component : components) {
    found /= Exists(found / component) ? CString(component) : FindEntry(found, component);
  }
  return found.string();
}

CString FullPath(const CString& path) {
  if (!HasDriveLetter(path)) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute.lexically_normal().string();
  }
  CString full = path.substr(0, 2);
  full.reserve(path.size());
  const auto components = Components(path);
  if (components.empty()) full += '\\';
  for (const std::string_view component : components) {
    full += '\\';
    full += component;
  }
  return full;
}

}  // namespace os
