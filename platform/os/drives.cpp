#include "platform/os/drives.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <utility>

namespace os {
namespace {

struct Drive {
  CString m_directory;
  DriveKind m_kind = DriveKind::kNoRoot;
};

constexpr std::size_t kLetters = 26;

struct DriveTable {
  std::mutex m_mutex;
  std::array<Drive, kLetters> m_drives;  // guarded by m_mutex

  DriveTable() { m_drives['c' - 'a'] = {"/", DriveKind::kFixed}; }
};

DriveTable& Table() {
  static DriveTable table;
  return table;
}

char LowerCase(char character) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
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

// The components of a library path below its drive, `.` and `..` folded.
std::vector<CString> Components(const CString& path) {
  std::vector<CString> components;
  constexpr std::string_view kSeparators = "\\/";
  std::size_t begin = 2;  // behind the letter and the colon
  while (begin <= path.size()) {
    const std::size_t end = std::min(path.find_first_of(kSeparators, begin), path.size());
    CString component = path.substr(begin, end - begin);
    if (component == "..") {
      if (!components.empty()) components.pop_back();
    } else if (!component.empty() && component != ".") {
      components.push_back(std::move(component));
    }
    begin = end + 1;
  }
  return components;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return LowerCase(x) == LowerCase(y);
         });
}

// The entry of `directory` that is called `name` but for its case; `name` itself when there is
// none. Of several the first in name order, so that the answer does not depend on the disk's own
// order.
CString FindEntry(const std::filesystem::path& directory, const CString& name) {
  CString found;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    const CString entry_name = entry->path().filename().string();
    if (EqualsIgnoringCase(entry_name, name) && (found.empty() || entry_name < found)) {
      found = entry_name;
    }
  }
  return found.empty() ? name : found;
}

bool Exists(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

std::optional<std::pair<char, Drive>> ParseMount(const CString& entry) {
  if (entry.size() < 3 || entry[1] != '=' || !IsLetter(entry[0])) return std::nullopt;
  static constexpr std::pair<std::string_view, DriveKind> kKinds[] = {
      {"removable", DriveKind::kRemovable}, {"fixed", DriveKind::kFixed},
      {"network", DriveKind::kNetwork},     {"cdrom", DriveKind::kCdRom},
      {"ramdisk", DriveKind::kRamDisk},
  };
  Drive drive{entry.substr(2), DriveKind::kFixed};
  if (const std::size_t colon = drive.m_directory.rfind(':'); colon != CString::npos) {
    const CString kind_name = drive.m_directory.substr(colon + 1);
    drive.m_directory.resize(colon);
    drive.m_kind = DriveKind::kNoRoot;
    for (const auto& [name, kind] : kKinds) {
      if (kind_name == name) drive.m_kind = kind;
    }
  }
  if (drive.m_directory.empty() || drive.m_kind == DriveKind::kNoRoot) return std::nullopt;
  return std::pair{entry[0], std::move(drive)};
}

}  // namespace

int MountDrive(char letter, const CString& host_directory, DriveKind kind) {
  if (!IsLetter(letter) || host_directory.empty() || kind == DriveKind::kNoRoot) return 0;
  SetDrive(letter, {host_directory, kind});
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

std::optional<CString> HostPath(const CString& path) {
  if (!HasDriveLetter(path)) return path;
  const Drive drive = DriveOf(path[0]);
  if (drive.m_kind == DriveKind::kNoRoot) return std::nullopt;

  const std::vector<CString> components = Components(path);
  std::filesystem::path exact = drive.m_directory;
  for (const CString& component : components) exact /= component;
  if (Exists(exact)) return exact.string();

  std::filesystem::path found = drive.m_directory;
  for (const CString& component : components) {
    found /= Exists(found / component) ? component : FindEntry(found, component);
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
  const std::vector<CString> components = Components(path);
  if (components.empty()) full += '\\';
  for (const CString& component : components) {
    full += '\\';
    full += component;
  }
  return full;
}

}  // namespace os
