#include "platform/framework/mem_file.h"

#include <algorithm>
#include <new>

IMPLEMENT_DYNAMIC(CMemFile, CFile)

CMemFile::CMemFile() = default;
CMemFile::~CMemFile() = default;

std::size_t CMemFile::Read(std::span<BYTE> into) {
  if (m_position >= m_bytes.size()) return 0;
  const auto rest = std::span(m_bytes).subspan(static_cast<std::size_t>(m_position));
  const std::size_t count = std::min(into.size(), rest.size());
  std::copy_n(rest.begin(), count, into.begin());
  m_position += count;
  return count;
}

void CMemFile::WritePieces(std::initializer_list<std::span<const BYTE>> pieces) {
  ULONGLONG bytes = 0;
  for (const auto& piece : pieces) bytes += piece.size();
  if (bytes == 0) return;
  // Grows before a byte moves, so that a write that fails changes nothing.
  if (m_position > m_bytes.max_size()) throw std::bad_alloc();
  if (m_position + bytes > m_bytes.size()) SetLength(m_position + bytes);
  auto to = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_position);
  for (const auto& piece : pieces) to = std::copy(piece.begin(), piece.end(), to);
  m_position += bytes;
}

void CMemFile::SetLength(ULONGLONG length) {
  if (length > m_bytes.max_size()) throw std::bad_alloc();
  m_bytes.resize(static_cast<std::size_t>(length));
}

void CMemFile::Close() {
  m_bytes.clear();
  m_position = 0;
}
