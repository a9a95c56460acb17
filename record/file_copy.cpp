#include "record/file_copy.h"

#include <algorithm>

#include "platform/framework/file.h"

namespace zebx {

namespace {

constexpr std::size_t kPieceBytes = 64 * 1024;

}  // namespace

FileCopier::FileCopier() : m_buffer(std::make_unique_for_overwrite<BYTE[]>(kPieceBytes)) {}

ULONGLONG FileCopier::Copy(CFile& from, CFile& to, ULONGLONG bytes) {
  ULONGLONG done = 0;
  while (done < bytes) {
    const auto wanted = static_cast<std::size_t>(std::min<ULONGLONG>(bytes - done, kPieceBytes));
    const std::size_t count = from.Read({m_buffer.get(), wanted});
    to.Write({m_buffer.get(), count});
    done += count;
    if (count < wanted) break;
  }
  return done;
}

}  // namespace zebx
