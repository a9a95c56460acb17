// The one door to the disk: the port through which everything reaches files and directories.
// platform/os implements it; a test puts its own in front to make the n-th call fail.
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
  bool m_new = false;        // with m_create: fail when there is a file, or anything, already
  bool m_truncate = false;   // empty it when it does
  bool m_exclusive = false;  // nobody else may have it open meanwhile
  // For one look at it: it is not marked as in use, nor asked whether others have it to themselves.
  // A search opens thousands of files, and the mark costs as much as reading one.
  bool m_brief = false;
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
  // True when opening made the file.
  virtual bool IsNew() { return false; }
  // True when it is certain that nobody else has the file open: it was opened exclusively, and the
  // disk keeps locks.
  virtual bool IsAlone() { return false; }
  // Cuts or extends the file, and gives back what is reserved behind the new end.
  virtual void Resize(ULONGLONG length) = 0;
  // Reserves room on the disk, also behind the end; the length stays. False, with nothing
  // reserved, when the disk has no room or no such operation: never an error.
  virtual bool Reserve(ULONGLONG, ULONGLONG) { return false; }
  // Gives back what is reserved behind the end. Nobody else may be writing the file.
  virtual void GiveBackReserve() { Resize(Length()); }
  // Closes and reports what only closing reveals. The destructor closes silently.
  virtual void Close() = 0;

  static constexpr std::size_t kMaxPieces = 8;
};

// One entry of a directory.
struct DirectoryEntry {
  CString m_name;
  bool m_is_directory = false;  // false for a symbolic link
};

// Gets one entry of a directory; the name is valid during the call only.
using DirectoryVisitor = std::function<void(std::string_view name, bool is_directory)>;

// A directory held open: who opens many files in it spares the way there each time. One thread at a
// time.
class ZEBX_API DirectoryHandle {
 public:
  virtual ~DirectoryHandle();

  // As FileSystem::List.
  virtual bool List(const DirectoryVisitor& visit) = 0;
  // Opens a file in it, by its name as listed. Throws CFileException.
  virtual std::unique_ptr<FileHandle> Open(const CString& name, const FileOpenMode& mode) = 0;
};

// What the disk knows of a file or directory.
struct FileStatus {
  bool m_is_directory = false;
  bool m_is_read_only = false;  // the owner may not write it
  bool m_is_link = false;       // told by LinkStatus alone
  ULONGLONG m_length = 0;       // bytes; 0 for a directory
  DWORD m_write_time = 0;       // of the last write, seconds since 1970
};

// How much room a disk has, in bytes.
struct DiskSpace {
  ULONGLONG m_available_bytes = 0;  // to the caller
  ULONGLONG m_total_bytes = 0;
  ULONGLONG m_free_bytes = 0;
};

// Paths are library paths, or the file system's own as RealPath gives them. A path with a zero byte
// leads to nothing.
class ZEBX_API FileSystem {
 public:
  virtual ~FileSystem();

  // Opens the file at a path. Throws CFileException.
  virtual std::unique_ptr<FileHandle> Open(const CString& path, const FileOpenMode& mode) = 0;
  // The absolute form of a path, without touching the disk.
  virtual CString FullPath(const CString& path) = 0;
  // The file system's own path of the same file or directory, symbolic links followed: no drive
  // letter, slashes between names, in which a backslash is a letter like others. What does not
  // exist is taken as spelled. Nothing when there is no such drive.
  virtual std::optional<CString> RealPath(const CString& path) = 0;

  // Shows the entries of a directory, "." and ".." included, in no particular order. False when it
  // is not a directory that can be read to its end; some entries may have been shown then. One read
  // of the directory: no entry is looked at. A symbolic link is no directory here, whatever it
  // leads to, so that a walk over a tree stays inside it.
  virtual bool List(const CString& path, const DirectoryVisitor& visit) = 0;
  // Null when it is no directory that can be read. What it is told is done by List and Open of this
  // object, which must outlive it, unless a file system knows better.
  virtual std::unique_ptr<DirectoryHandle> OpenDirectory(const CString& path);
  // Nothing when there is no such file or directory. Of a symbolic link, what it leads to.
  virtual std::optional<FileStatus> Status(const CString& path) = 0;
  // The same of a symbolic link itself: no directory, of length 0.
  virtual std::optional<FileStatus> LinkStatus(const CString& path) = 0;
  // True when both paths lead to one existing file.
  virtual bool IsSameFile(const CString& path, const CString& other) = 0;

  // Makes one directory; its parent must exist. False when anything is there already, or it cannot
  // be made.
  virtual bool MakeDirectory(const CString& path) = 0;
  // Removes an empty directory. False when it stays: it is not empty, or the root of a drive.
  virtual bool RemoveDirectory(const CString& path) = 0;
  // Deletes a file; a symbolic link goes as such, whatever it leads to, and a pipe or socket goes
  // like a link. False with the file left alone when it does not exist, is of another kind, has no
  // owner write permission, or is open (or may be: the disk does not answer that question). The
  // length of what was deleted, 0 for a link, becomes `*length_bytes` when that is not null.
  virtual bool DeleteFile(const CString& path, ULONGLONG* length_bytes) = 0;
  // Puts the file at `replacement` in the place of the one at `path`, which need not exist: with
  // its mode and owner, and through a symbolic link. Both on one disk. At every moment, also after
  // the power fails, the place holds the old file or the new one whole. Throws CFileException, with
  // both left in their places.
  virtual void Replace(const CString& path, const CString& replacement) = 0;

  // Of the disk that the path is on; nothing when the path does not exist.
  virtual std::optional<DiskSpace> Space(const CString& path) = 0;
};

// The operating system's files. Defined by platform/os.
ZEBX_API FileSystem& NativeFileSystem();

// The file system in force, and its replacement: borrowed, null for the native one. Not to be
// replaced while other threads open files.
ZEBX_API FileSystem& CurrentFileSystem();
ZEBX_API void SetFileSystem(FileSystem* file_system);

}  // namespace zebx
