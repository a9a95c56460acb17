#include "platform/framework/file_exception.h"

#include <system_error>
#include <utility>

namespace {

const char* Describe(CFileException::Cause cause) {
  using Cause = CFileException::Cause;
  switch (cause) {
    case Cause::kFileNotFound:
      return "the file does not exist";
    case Cause::kBadPath:
      return "the path does not exist";
    case Cause::kTooManyOpenFiles:
      return "too many files are open";
    case Cause::kAccessDenied:
      return "access is denied";
    case Cause::kSharingViolation:
      return "the file is in use";
    case Cause::kInvalidFile:
      return "no file is open";
    case Cause::kHardIo:
      return "the disk reported an error";
    case Cause::kDiskFull:
      return "the disk is full";
    case Cause::kGeneric:
      break;
  }
  return "the file operation failed";
}

}  // namespace

CFileException::CFileException(Cause cause, int os_error, CString path)
    : m_cause(cause), m_os_error(os_error), m_path(std::move(path)) {
  if (!m_path.empty()) m_text = m_path + ": ";
  m_text += Describe(cause);
  if (os_error != 0) m_text += " (" + std::generic_category().message(os_error) + ")";
}

CFileException::~CFileException() = default;
