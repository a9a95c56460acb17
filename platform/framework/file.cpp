#include "platform/framework/file.h"

#include <utility>

#include "platform/framework/file_system.h"

using namespace zebx;

IMPLEMENT_DYNAMIC(CFile, CObject)

CFile::CFile() = default;
CFile::~CFile() {
  try {
    if (m_handle != nullptr) CFile::Close();
  } catch (const CFileException&) {
    // Whoever wants to know of it closes the file.
  }
}

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
  m_is_new = m_handle->IsNew();
  m_position = 0;
  m_reserve_step = 0;
  m_reserved_end = 0;
  m_has_reserved = false;
  m_is_reserve_refused = false;
  return 1;
}

void CFile::Attach(std::unique_ptr<FileHandle> handle, const CString& path) {
  m_handle = std::move(handle);
  m_path = path;
  m_position = 0;
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
  ULONGLONG end = m_position;
  for (const auto& piece : pieces) end += piece.size();
  if (m_reserve_step != 0 && end > m_reserved_end && !m_is_reserve_refused) ReserveUpTo(end);
  Handle().WriteAt(m_position, {pieces.begin(), pieces.size()});
  m_position = end;
}

void CFile::ReserveUpTo(ULONGLONG end) {
  const ULONGLONG begin = m_reserved_end != 0 ? m_reserved_end : m_position;
  const ULONGLONG reserved_end = (end / m_reserve_step + 1) * m_reserve_step;
  if (Handle().Reserve(begin, reserved_end - begin)) {
    m_reserved_end = reserved_end;
    m_has_reserved = true;
  } else {
    m_is_reserve_refused = true;  // not to be asked again and again
  }
}

void CFile::GiveBackReserve() {
  m_reserved_end = 0;
  m_has_reserved = false;
  Handle().GiveBackReserve();
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

bool CFile::IsAlone() const {
  return Handle().IsAlone();
}

void CFile::SetLength(ULONGLONG length) {
  Handle().Resize(length);
  m_reserved_end = 0;  // cutting has given it back
}

void CFile::Close() {
  Handle();
  const auto handle = std::exchange(m_handle, nullptr);
  try {
    if (m_has_reserved) handle->GiveBackReserve();
  } catch (const CFileException&) {
    // Room on the disk is lost for now, and no byte of the file.
  }
  handle->Close();
}
