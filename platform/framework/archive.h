// A stream of values over a file, with the framework's string encoding.
#pragma once

#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/types.h"

class CFile;

// Integers are little-endian. A string is its length in one byte below 255, else 0xFF and a 16-bit
// length below 0xFFFE, else 0xFF, 0xFFFF and a 32-bit length; then its characters. Buffered: bytes
// reach the file when the buffer is full and at Close. A value that is not whole in the file throws
// CFileException (kGeneric) and leaves its variable alone; a string length beyond what the file
// still holds does, before memory is taken for it. Storing into an archive that loads, or the other
// way round, and using a closed one throw CFileException (kInvalidFile). Used by one thread at a
// time.
class ZEBX_API CArchive {
 public:
  enum class Mode { kStore, kLoad };

  // Borrows the file, open for the mode, and starts at its position.
  CArchive(CFile& file, Mode mode, std::size_t buffer_bytes = 4096);
  // Does not flush: what was not closed is lost on purpose when an exception unwinds.
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  bool IsStoring() const { return m_mode == Mode::kStore; }

  CArchive& operator<<(WORD value);
  CArchive& operator<<(std::int16_t value);
  CArchive& operator<<(DWORD value);
  CArchive& operator<<(LONG value);
  CArchive& operator<<(const CString& text);
  CArchive& operator>>(WORD& value);
  CArchive& operator>>(std::int16_t& value);
  CArchive& operator>>(DWORD& value);
  CArchive& operator>>(LONG& value);
  CArchive& operator>>(CString& text);

  // Writes out what is buffered; nothing may be stored or loaded afterwards. Throws CFileException.
  void Close();

 private:
  template <typename T>
  void PutInteger(T value);
  template <typename T>
  T GetInteger();
  DWORD GetTextLength();
  void Put(const BYTE* bytes, std::size_t count);
  void Get(BYTE* bytes, std::size_t count);
  void Flush();
  ULONGLONG Remaining() const;
  [[noreturn]] void Fail(CFileException::Cause cause) const;

  CFile& m_file;
  const Mode m_mode;
  std::vector<BYTE> m_buffer;  // empty once closed
  std::size_t m_used = 0;      // bytes waiting to be written, or already taken from the buffer
  std::size_t m_filled = 0;
};
