// Copying a range of bytes from one file to another in large pieces.
#pragma once

#include <memory>

#include "platform/framework/types.h"

class CFile;

namespace zebx {

class FileCopier {
 public:
  // Throws std::bad_alloc.
  FileCopier();

  // Copies `bytes` from the position of `from` to that of `to` and moves both on. Returns how many:
  // fewer only when `from` ends first. Throws CFileException.
  ULONGLONG Copy(CFile& from, CFile& to, ULONGLONG bytes);

 private:
  std::unique_ptr<BYTE[]> m_buffer;
};

}  // namespace zebx
