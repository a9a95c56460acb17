#include "recovery/temporary_file.h"

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"

namespace zebx {

namespace {

void Make(const CString& path) {
  FileOpenMode mode;
  mode.m_write = mode.m_create = mode.m_new = true;
  CurrentFileSystem().Open(path, mode);
}

}  // namespace

bool IsTemporaryName(std::string_view path) {
  const std::size_t stem = path.find_last_not_of("0123456789") + 1;
  return stem < path.size() && path.substr(0, stem).ends_with(kTemporaryExtension);
}

bool MakeNewFile(const CString& path) {
  try {
    Make(path);
    return true;
  } catch (const CFileException&) {
    return false;
  }
}

std::optional<CString> MakeTemporaryFile(const CString& path) {
  constexpr int kMostNames = 100;
  for (int number = 1; number <= kMostNames; ++number) {
    const CString name = path + CString(kTemporaryExtension) + std::to_string(number);
    try {
      Make(name);
      return name;
    } catch (const CFileException&) {
      if (!CurrentFileSystem().LinkStatus(name)) throw;
    }
  }
  return std::nullopt;
}

}  // namespace zebx
