// The one exception that file operations throw.
#pragma once

#include <exception>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

class ZEBX_API CFileException : public std::exception {
 public:
  enum class Cause {
    kGeneric,
    kFileNotFound,
    kBadPath,
    kTooManyOpenFiles,
    kAccessDenied,
    kSharingViolation,
    kInvalidFile,  // the object has no open file
    kHardIo,
    kDiskFull,
  };

  // `os_error` is the operating system's own number, 0 when it had no part in the failure.
  CFileException(Cause cause, int os_error, CString path);
  ~CFileException() override;

  // One line for a person: what happened to which file.
  const char* what() const noexcept override { return m_text.c_str(); }

  Cause GetCause() const { return m_cause; }
  int GetOsError() const { return m_os_error; }
  const CString& GetPath() const { return m_path; }

 private:
  Cause m_cause;
  int m_os_error;
  CString m_path;
  CString m_text;
};
