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
// Entries come sorted by name without regard to case, "." and ".." first. Length and times are
// asked of the disk only when asked for here. Used by one thread at a time.
class ZEBX_API CFileFind {
 public:
  // `pattern` is a directory with "*.*" behind it (everything in it), or the path of one file or
  // directory. 1 when something matches, else 0. Never throws.
  int FindFile(const CString& pattern);
  // 1 when another entry follows the one moved to, 0 when it is the last. Only after FindFile
  // answered 1.
  int FindNextFile();

  // Of the entry moved to: its name, and its path (the pattern's directory, a backslash or slash as
  // there, the name).
  CString GetFileName() const;
  CString GetFilePath() const;
  // Bytes; 0 for a directory or an entry that has gone since.
  ULONGLONG GetLength() const;
  // Time 0 for an entry that has gone since.
  CTime GetLastWriteTime() const;
  bool IsDirectory() const;
  // "." or "..".
  bool IsDots() const;
  // The owner may not write it.
  bool IsReadOnly() const;

 private:
  const DirectoryEntry& Entry() const { return m_entries[m_next - 1]; }

  CString m_directory;  // with its trailing separator
  std::vector<DirectoryEntry> m_entries;
  std::size_t m_next = 0;  // the entry that FindNextFile moves to
};
