// Opening a file whose failure to open is the caller's exception.
#pragma once

#include "platform/framework/file.h"
#include "platform/framework/file_exception.h"

namespace zebx {

// Throws CFileException.
inline void OpenOrThrow(CFile& file, const CString& path, UINT mode) {
  CFileException error(CFileException::Cause::kGeneric, 0, path);
  if (file.Open(path, mode, &error) != 0) return;
  throw CFileException(error.GetCause(), error.GetOsError(), error.GetPath());
}

}  // namespace zebx
