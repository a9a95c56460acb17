#include "storage/file_replacement.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"

namespace zebx {
namespace {

using Cause = CFileException::Cause;

constexpr FileOpenMode kToWrite{.m_write = true};
constexpr FileOpenMode kToReadAndWrite{.m_read = true, .m_write = true};
constexpr FileOpenMode kToMake{.m_write = true, .m_create = true, .m_new = true};

void WriteAtStart(FileHandle& file, std::span<const BYTE> bytes) {
  file.WriteAt(0, {&bytes, 1});
}

// False when there is no such file yet. Throws when there is and it may not be written.
bool IsWritableFile(const CString& path) {
  try {
    CurrentFileSystem().Open(path, kToWrite)->Close();
    return true;
  } catch (const CFileException& failure) {
    if (failure.GetCause() != Cause::kFileNotFound) throw;
    return false;
  }
}

// A file that did not exist before, removed again unless it was put in another's place.
class NewFile {
 public:
  // Throws CFileException.
  explicit NewFile(const CString& beside) {
    constexpr int kMostNames = 100;  // of files left behind by power failures, and others'
    for (int number = 0; m_handle == nullptr; ++number) {
      m_path = beside + ".new" + (number > 0 ? std::to_string(number) : std::string());
      try {
        m_handle = CurrentFileSystem().Open(m_path, kToMake);
      } catch (const CFileException&) {
        if (!CurrentFileSystem().LinkStatus(m_path)) throw;
        if (number == kMostNames) throw CFileException(Cause::kAccessDenied, 0, m_path);
      }
    }
  }
  ~NewFile() {
    m_handle.reset();
    if (!m_is_in_place) CurrentFileSystem().DeleteFile(m_path, nullptr);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void Write(std::span<const BYTE> bytes) {
    WriteAtStart(*m_handle, bytes);
    m_handle->Close();
    m_handle.reset();
  }
  void PutInPlaceOf(const CString& path) {
    CurrentFileSystem().Replace(path, m_path);
    m_is_in_place = true;
  }

 private:
  CString m_path;
  std::unique_ptr<FileHandle> m_handle;
  bool m_is_in_place = false;
};

// What was written over comes back when the disk refuses.
void WriteOver(const CString& path, std::span<const BYTE> bytes) {
  const auto file = CurrentFileSystem().Open(path, kToReadAndWrite);
  const ULONGLONG old_length = file->Length();
  std::vector<BYTE> old(static_cast<std::size_t>(std::min<ULONGLONG>(old_length, bytes.size())));
  old.resize(file->ReadAt(0, old));
  try {
    WriteAtStart(*file, bytes);
    if (old_length > bytes.size()) file->Resize(bytes.size());
  } catch (const CFileException&) {
    WriteAtStart(*file, old);
    file->Resize(old_length);
    throw;
  }
  file->Close();
}

}  // namespace

bool ReplaceContents(const CString& path, std::span<const BYTE> bytes) {
  const auto target = CurrentFileSystem().RealPath(path);
  if (!target) return false;
  bool is_there = false;
  try {
    is_there = IsWritableFile(*target);
    NewFile file(*target);
    file.Write(bytes);
    file.PutInPlaceOf(*target);
    return true;
  } catch (const CFileException& failure) {
    if (!is_there || failure.GetCause() != Cause::kAccessDenied) return false;
  }
  try {
    WriteOver(*target, bytes);
    return true;
  } catch (const CFileException&) {
    return false;
  }
}

}  // namespace zebx
