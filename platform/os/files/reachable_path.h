// Host paths of any length for the system calls that take a directory and a name (openat and its
// kin).
#pragma once

#include "platform/framework/types.h"

namespace zebx {

// The system takes at most 4,096 bytes of a path at once. Of a longer one the directories on the
// way are opened piece by piece, so that what lies deeper can be reached, and deleted, too. Where
// that fails the rest stays too long, and so the call on it fails.
class ReachablePath {
 public:
  explicit ReachablePath(CString host_path);
  ~ReachablePath();
  ReachablePath(const ReachablePath&) = delete;
  ReachablePath& operator=(const ReachablePath&) = delete;

  // Valid as long as this object.
  int Directory() const { return m_directory; }
  const char* Name() const { return m_path.c_str() + m_name_at; }

 private:
  CString m_path;
  // NOLINTNEXTLINE(modernize-use-default-member-init): the value stands in a system header
  int m_directory;  // open, or the call's word for the directory that the process is in
  std::size_t m_name_at = 0;
};

}  // namespace zebx
