// The port through which CFile reaches the operating system's files. platform/os implements it;
// a test puts its own in front to make the n-th call fail.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx {

// How a file is opened.
struct FileOpenMode {
  bool m_read = false;
  bool m_write = false;
  bool m_create = false;     // make the file when it does not exist
  bool m_truncate = false;   // empty it when it does
  bool m_exclusive = false;  // nobody else may have it open meanwhile
};

// One open file. Offsets are the caller's: there is no position, so no call is spent on moving one.
// Every operation throws CFileException on failure. One thread at a time.
class ZEBX_API FileHandle {
 public:
  virtual ~FileHandle();

  // Reads up to into.size() bytes at `offset`; fewer only at the end of the file. Returns the
  // count.
  virtual std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) = 0;
  // Writes the pieces back to back at `offset`, at most kMaxPieces of them, in one system call as
  // long as the system takes them whole.
  virtual void WriteAt(ULONGLONG offset, std::span<const std::span<const BYTE>> pieces) = 0;
  virtual ULONGLONG Length() = 0;
  // What it was when the file was opened, where opening found that out anyway.
  virtual ULONGLONG LengthAtOpening() { return Length(); }
  virtual void Resize(ULONGLONG length) = 0;
  // Closes and reports what only closing reveals. The destructor closes silently.
  virtual void Close() = 0;

  static constexpr std::size_t kMaxPieces = 8;
};

// Gets one entry of a directory; the name is valid during the call only.
using DirectoryVisitor = std::function<void(std::string_view name, bool is_directory)>;

// What the disk knows of a file or directory.
struct FileStatus {
  bool m_is_directory = false;
  bool m_is_read_only = false;  // the owner may not write it
  ULONGLONG m_length = 0;       // bytes; 0 for a directory
  DWORD m_write_time = 0;       // of the last write, seconds since 1970
};

class ZEBX_API FileSystem {
 public:
  virtual ~FileSystem();

  // Opens the file at a library path. Throws CFileException.
  virtual std::unique_ptr<FileHandle> Open(const CString& path, const FileOpenMode& mode) = 0;
  // The absolute form of a path, without touching the disk.
  virtual CString FullPath(const CString& path) = 0;
  // Shows the entries of a directory, "." and ".." included, in no particular order. False when it
  // is not a directory that can be read to its end; some entries may have been shown then. One read
  // of the directory: no entry is looked at. A symbolic link is no directory here, whatever it
  // leads to, so that a walk over a tree stays inside it.
  virtual bool List(const CString& path, const DirectoryVisitor& visit) = 0;
  // Nothing when there is no such file or directory. Of a symbolic link, what it leads to.
  virtual std::optional<FileStatus> Status(const CString& path) = 0;
  // True when both paths lead to one existing file.
  virtual bool IsSameFile(const CString& path, const CString& other) = 0;
};

// The operating system's files. Defined by platform/os.
ZEBX_API FileSystem& NativeFileSystem();

// The file system in force, and its replacement: borrowed, null for the native one. Not to be
// replaced while other threads open files.
ZEBX_API FileSystem& CurrentFileSystem();
ZEBX_API void SetFileSystem(FileSystem* file_system);

}  // namespace zebx
