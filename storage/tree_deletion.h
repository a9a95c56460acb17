// Deleting a directory with everything in it, and what that would free.
#pragma once

#include "platform/framework/types.h"

namespace zebx {

// Only a directory below the root of a drive is ever deleted, and no link to one: an empty path, a
// host path or one that folds to a root is a slip whose price would be a whole disk. Links inside
// go as such. `freed_bytes` (modulo 2^32) counts the files deleted, also when the first entry that
// cannot be deleted ends it. False when the directory stays.
bool DeleteTree(const CString& directory, DWORD& freed_bytes);

// The bytes that DeleteTree would free now if every file can be deleted.
ULONGLONG BytesFreedByDeletingTree(const CString& directory);

}  // namespace zebx
