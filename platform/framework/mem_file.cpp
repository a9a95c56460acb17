#include "platform/framework/mem_file.h"

#include <algorithm>

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
  for (const auto& piece : pieces) {
    if (piece.empty()) continue;
    const auto begin = static_cast<std::size_t>(m_position);
    if (begin + piece.size() > m_bytes.size()) m_bytes.resize(begin + piece.size());
    std::copy(piece.begin(), piece.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(begin));
    m_position += piece.size();
  }
}

void CMemFile::SetLength(ULONGLONG length) {
  m_bytes.resize(static_cast<std::size_t>(length));
}

void CMemFile::Close() {
  m_bytes.clear();
  m_position = 0;
}
