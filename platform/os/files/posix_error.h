// The causes behind the system's error numbers.
#pragma once

#include <cerrno>

#include "platform/framework/file_exception.h"

namespace zebx {

inline CFileException::Cause CauseOf(int os_error) {
  using Cause = CFileException::Cause;
  switch (os_error) {
    case ENOENT:
      return Cause::kFileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return Cause::kBadPath;
    case EMFILE:
    case ENFILE:
      return Cause::kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ETXTBSY:
    case EBUSY:
      return Cause::kAccessDenied;
    case EWOULDBLOCK:
      return Cause::kSharingViolation;
    case EIO:
      return Cause::kHardIo;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return Cause::kDiskFull;
    default:
      return Cause::kGeneric;
  }
}

}  // namespace zebx
