// Operations on whole files by name, in the file system in force.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

// Deletes the file at a library path; a symbolic link goes as such, whatever it leads to, and so
// does a pipe or socket. 1, or 0 with the file left alone when it does not exist, is of another
// kind, has no owner write permission, or is open through a CFile of any process. A disk that
// cannot tell whether it is open counts as one on which it is. `length_bytes`, when not null,
// becomes the length of what was deleted: 0 for a link.
ZEBX_API int DeleteFile(const CString& path, ULONGLONG* length_bytes = nullptr);

// Puts the file at `replacement` in the place of the file at `path`, which need not exist: with its
// mode and owner, and through a symbolic link. Both on one disk. At every moment, also after the
// power fails, the place holds the old file or the new one whole. 1, or 0 with both left in their
// places.
ZEBX_API int ReplaceFile(const CString& path, const CString& replacement);

}  // namespace os
