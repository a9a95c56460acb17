#include "platform/framework/file_find.h"

#include <string_view>
#include <utility>

#include "platform/framework/directory_listing.h"

using namespace zebx;

namespace {

constexpr std::string_view kEverything = "*.*";
constexpr std::string_view kSeparators = "\\/";

bool IsOnDrive(std::string_view path) {
  return path.size() >= 2 && path[1] == ':';
}

// The directory of a pattern for everything in it, with its separator. A lone separator names none:
// it is what is left when a caller's directory is empty, and the host's root must not be walked
// (and deleted) in its place.
std::optional<CString> DirectoryOf(std::string_view pattern) {
  if (!pattern.ends_with(kEverything)) return std::nullopt;
  CString directory(pattern.substr(0, pattern.size() - kEverything.size()));
  if (directory.find_first_not_of(kSeparators) == CString::npos) return std::nullopt;
  if (kSeparators.find(directory.back()) == CString::npos &&
      !(directory.size() == 2 && IsOnDrive(directory))) {
    return std::nullopt;
  }
  if (!IsOnDrive(directory)) directory.back() = '/';
  return directory;
}

}  // namespace

int CFileFind::FindFile(const CString& pattern) {
  m_entries.clear();
  m_directory.clear();
  m_next = 0;
  auto directory = DirectoryOf(pattern);
  if (!directory) return FindOne(pattern);
  auto entries = ListByName(CurrentFileSystem(), *directory);
  if (!entries || entries->empty()) return 0;
  m_entries = std::move(*entries);
  m_directory = std::move(*directory);
  return 1;
}

// The directory or file itself, under its last name.
int CFileFind::FindOne(CString path) {
  const auto status = CurrentFileSystem().Status(path);
  if (!status) return 0;
  while (path.size() > 1 && kSeparators.find(path.back()) != CString::npos) path.pop_back();
  const std::size_t separator = path.size() > 1 ? path.find_last_of(kSeparators) : CString::npos;
  if (separator != CString::npos) m_directory = path.substr(0, separator + 1);
  m_entries.push_back({path.substr(m_directory.size()), status->m_is_directory});
  return 1;
}

int CFileFind::FindNextFile() {
  if (m_next < m_entries.size()) ++m_next;
  return m_next < m_entries.size() ? 1 : 0;
}

const DirectoryEntry& CFileFind::Current() const {
  static const DirectoryEntry kNone;
  return m_next > 0 ? m_entries[m_next - 1] : kNone;
}

CString CFileFind::GetFileName() const {
  return Current().m_name;
}

CString CFileFind::GetFilePath() const {
  return m_next > 0 ? m_directory + Current().m_name : CString();
}

ULONGLONG CFileFind::GetLength() const {
  const auto status = CurrentFileSystem().Status(GetFilePath());
  return status ? status->m_length : 0;
}

CTime CFileFind::GetLastWriteTime() const {
  const auto status = CurrentFileSystem().Status(GetFilePath());
  return CTime(status ? status->m_write_time : 0);
}

bool CFileFind::IsDirectory() const {
  return Current().m_is_directory;
}

bool CFileFind::IsDots() const {
  return IsDotName(Current().m_name);
}

bool CFileFind::IsReadOnly() const {
  const auto status = CurrentFileSystem().Status(GetFilePath());
  return status && status->m_is_read_only;
}
