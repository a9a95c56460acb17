// The one walk over a directory tree: what deletes it, forecasts its deletion or measures it sees
// the same files in the same order.
#pragma once

#include "platform/framework/file_system.h"
#include "platform/framework/types.h"

namespace zebx {

// What a walk comes by. Paths are valid during the call only.
class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;

  // Before what lies in a directory: false passes it over.
  virtual bool Enter(const CString& directory);
  // False ends the walk. Symbolic links are files.
  virtual bool VisitFile(const CString& path) = 0;
  // Behind everything in a directory; false ends the walk.
  virtual bool Leave(const CString& directory);
  // A directory that cannot be listed: true passes it over, false ends the walk.
  virtual bool PassOverUnreadable(const CString& directory);
};

// Walks over `root`, a path as FileSystem::RealPath gives it, and everything below it: whatever
// lies in a directory in the order of names, before the directory itself. Whoever can write to the
// disk decides on names and depth, so the directories on the way down are kept in a list instead of
// on the stack, and a backslash in a name leads nowhere. True when nothing ended it early.
bool WalkTree(FileSystem& file_system, const CString& root, TreeVisitor& visitor);

}  // namespace zebx
