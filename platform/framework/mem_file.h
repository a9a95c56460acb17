// A file whose bytes live in memory.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/file.h"

// Always open; grows as it is written. Memory exhaustion throws std::bad_alloc.
class ZEBX_API CMemFile : public CFile {
  DECLARE_DYNAMIC(CMemFile)

 public:
  CMemFile();
  ~CMemFile() override;

  bool IsOpen() const override { return true; }
  std::size_t Read(std::span<BYTE> into) override;
  void WritePieces(std::initializer_list<std::span<const BYTE>> pieces) override;
  ULONGLONG GetLength() const override { return m_bytes.size(); }
  void SetLength(ULONGLONG length) override;
  // Empties the file and returns to its start.
  void Close() override;

  // The bytes, borrowed; valid until the next operation that changes the length.
  std::span<const BYTE> GetBytes() const { return m_bytes; }

 private:
  std::vector<BYTE> m_bytes;
};
