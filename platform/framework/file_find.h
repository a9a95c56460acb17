// Walks over the entries of a directory, in the order of their names.
#pragma once

#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/file_system.h"
#include "platform/framework/time.h"

// As the operating system's finder goes: FindFile makes the finder ready, and each FindNextFile
// moves to an entry and tells whether another one follows, so that a walk reads
//
//   int more = finder.FindFile(dir + "\\*.*");
//   while (more != 0) {
//     more = finder.FindNextFile();
//     ... finder.GetFileName() ...
//   }
//
// Entries come sorted by name without regard to case, bytes from 0x80 behind ASCII; "." and ".."
// come first. Finding is one read of the directory; length, time and read-only mark cost a question
// to the disk each time they are asked for. A symbolic link found inside a directory is not
// followed: it counts as a file. Used by one thread at a time.
class ZEBX_API CFileFind {
 public:
  // `pattern` is a directory with "\*.*" or "/*.*" behind it (everything in it), or the path of one
  // file or directory, a bare drive "d:" among them. 1 when something matches, else 0. Nothing does
  // without a directory before the separator, so that an empty one never stands for the host's
  // root.
  int FindFile(const CString& pattern);
  // Moves on. 1 when another entry follows the one moved to, 0 when it is the last.
  int FindNextFile();

  // Of the entry moved to: its name, and its path (the pattern's directory, its backslash or slash,
  // the name; always a slash on a path without a drive, where a backslash is a letter like others).
  // Before the first move everything is empty, 0 or false.
  CString GetFileName() const;
  CString GetFilePath() const;
  // Bytes; 0 for a directory and for an entry that has gone since.
  ULONGLONG GetLength() const;
  // Time 0 for an entry that has gone since.
  CTime GetLastWriteTime() const;
  bool IsDirectory() const;
  // "." or "..".
  bool IsDots() const;
  // The owner may not write it.
  bool IsReadOnly() const;

 private:
  int FindOne(CString path);
  const zebx::DirectoryEntry& Current() const;

  CString m_directory;  // with its trailing separator
  std::vector<zebx::DirectoryEntry> m_entries;
  std::size_t m_next = 0;  // the entry that FindNextFile moves to
};
