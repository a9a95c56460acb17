#include "platform/framework/directory_listing.h"

#include <algorithm>

#include "platform/framework/letter_case.h"

namespace zebx {
namespace {

// Letters compare as unsigned bytes on every compiler.
unsigned char Rank(char letter) {
  return static_cast<unsigned char>(LowerCase(letter));
}

// Names that differ in case alone go by their bytes, so that the order does not depend on the
// disk's own.
bool GoesBefore(std::string_view a, std::string_view b) {
  const bool a_is_dots = IsDotName(a);
  const bool b_is_dots = IsDotName(b);
  if (a_is_dots != b_is_dots) return a_is_dots;
  const auto [in_a, in_b] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(),
                                          [](char x, char y) { return Rank(x) == Rank(y); });
  if (in_a != a.end() && in_b != b.end()) return Rank(*in_a) < Rank(*in_b);
  if (a.size() != b.size()) return a.size() < b.size();
  return a < b;
}

template <typename Lister>
std::optional<std::vector<DirectoryEntry>> Sorted(Lister&& list) {
  std::vector<DirectoryEntry> entries;
  const auto keep = [&entries](std::string_view name, bool is_directory) {
    entries.push_back({CString(name), is_directory});
  };
  if (!list(keep)) return std::nullopt;
  std::sort(entries.begin(), entries.end(), [](const DirectoryEntry& a, const DirectoryEntry& b) {
    return GoesBefore(a.m_name, b.m_name);
  });
  return entries;
}

}  // namespace

bool IsDotName(std::string_view name) {
  return name == "." || name == "..";
}

std::optional<std::vector<DirectoryEntry>> ListByName(FileSystem& file_system,
                                                      const CString& directory) {
  return Sorted([&](const DirectoryVisitor& visit) { return file_system.List(directory, visit); });
}

std::optional<std::vector<DirectoryEntry>> ListByName(DirectoryHandle& directory) {
  return Sorted([&](const DirectoryVisitor& visit) { return directory.List(visit); });
}

CString PathInside(const CString& directory, std::string_view name) {
  const bool is_on_drive = directory.size() >= 2 && directory[1] == ':';
  CString path;
  path.reserve(directory.size() + 1 + name.size());
  path = directory;
  while (!path.empty() && (path.back() == '\\' || path.back() == '/')) path.pop_back();
  path += is_on_drive ? '\\' : '/';
  return path.append(name);
}

}  // namespace zebx
