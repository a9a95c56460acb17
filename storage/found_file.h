// One file that a search comes by, and the header that tells of it.
#pragma once

#include <memory>
#include <string_view>

#include "platform/framework/file_system.h"
#include "record/zeb_file_info.h"

namespace zebx {

// Borrows the open directory and the name. Each Read makes a header of what the file itself holds;
// null for a file that is none of its kind. They throw CFileException and std::bad_alloc.
class FoundFile {
 public:
  FoundFile(DirectoryHandle& directory, const CString& directory_path, const CString& name);

  std::unique_ptr<CZebFileInfo> ReadRecording() const;
  // A snapshot with a host name.
  std::unique_ptr<CZebFileInfo> ReadPicture() const;
  // A face file with a host name.
  std::unique_ptr<CZebFileInfo> ReadFaces() const;
  // One of the two logs, by its name.
  std::unique_ptr<CZebFileInfo> ReadLog() const;

 private:
  DirectoryHandle& m_directory;
  const CString& m_name;
  CString m_path;
};

}  // namespace zebx
