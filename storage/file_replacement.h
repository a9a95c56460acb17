// Putting new contents in the place of a file's.
#pragma once

#include <span>

#include "platform/framework/types.h"

namespace zebx {

// Writes the bytes to a new file beside the old one, or beside what a link leads to, and puts it in
// the old one's place in one step, with its mode and owner. The new file is named after the old one
// with ".new" behind, and a number where something has that name already: that is somebody's. Where
// the directory may not be changed or has no such name left, the file is a mount of its own or its
// owner cannot be kept, the old file is written over; then only a power failure in between can
// damage it. False when it could not be done: the file is as it was then, or has the new contents
// where only closing it failed.
bool ReplaceContents(const CString& path, std::span<const BYTE> bytes);

}  // namespace zebx
