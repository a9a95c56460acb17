#include "platform/framework/file.h"

#include <utility>

#include "platform/framework/file_system.h"

using namespace zebx;

IMPLEMENT_DYNAMIC(CFile, CObject)

CFile::CFile() = default;
CFile::~CFile() = default;

int CFile::Open(const CString& path, UINT flags, CFileException* error) {
  FileOpenMode mode;
  mode.m_read = (flags & kModeWrite) == 0;
  mode.m_write = (flags & (kModeWrite | kModeReadWrite)) != 0;
  mode.m_create = (flags & kModeCreate) != 0;
  mode.m_truncate = mode.m_create && (flags & kModeNoTruncate) == 0;
  mode.m_exclusive = (flags & kShareExclusive) != 0;
  try {
    m_handle = CurrentFileSystem().Open(path, mode);
    m_path = CurrentFileSystem().FullPath(path);
  } catch (const CFileException& failure) {
    if (error != nullptr) *error = failure;
    return 0;
  }
  m_position = 0;
  return 1;
}

bool CFile::IsOpen() const {
  return m_handle != nullptr;
}

FileHandle& CFile::Handle() const {
  if (m_handle == nullptr) throw CFileException(CFileException::Cause::kInvalidFile, 0, m_path);
  return *m_handle;
}

std::size_t CFile::Read(std::span<BYTE> into) {
  const std::size_t count = Handle().ReadAt(m_position, into);
  m_position += count;
  return count;
}

void CFile::WritePieces(std::initializer_list<std::span<const BYTE>> pieces) {
  Handle().WriteAt(m_position, {pieces.begin(), pieces.size()});
  for (const auto& piece : pieces) m_position += piece.size();
}

ULONGLONG CFile::Seek(ULONGLONG position) {
  return m_position = position;
}

ULONGLONG CFile::GetLength() const {
  return Handle().Length();
}

ULONGLONG CFile::GetLengthAtOpening() const {
  return Handle().LengthAtOpening();
}

void CFile::SetLength(ULONGLONG length) {
  Handle().Resize(length);
}

void CFile::Close() {
  Handle();
  const auto handle = std::exchange(m_handle, nullptr);
  handle->Close();
}
