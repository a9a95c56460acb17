#include "storage/file_search_info.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"

using namespace zebx;

namespace {

constexpr DWORD kSliceBytes = 2 * sizeof(int);  // start and count

// What CZebFileInfo::Write puts down, which GetSizeForWrite falls short of for longer texts.
DWORD WriteBytes(const CZebFileInfo& header) {
  DWORD bytes = header.GetSizeForWrite();
  for (const CString& text : {header.GetCameraName(), header.GetBoardName(), header.GetFileName(),
                              header.GetHostName()}) {
    if (text.size() > CZebFileInfo::kMaxTextBytes) {
      bytes += static_cast<DWORD>(text.size() - CZebFileInfo::kMaxTextBytes);
    }
  }
  return bytes;
}

int CountOf(const std::vector<const CZebFileInfo*>& headers) {
  return static_cast<int>(headers.size());
}

}  // namespace

CFileSearchInfo::CFileSearchInfo(CSearchParam* criteria) {
  if (criteria != nullptr) m_criteria = std::make_unique<CSearchParam>(*criteria);
}

CFileSearchInfo::~CFileSearchInfo() {
  DestroyHeaders();
}

void CFileSearchInfo::Append(std::unique_ptr<CZebFileInfo> header) {
  AddTail(header.get());
  static_cast<void>(header.release());  // the list has it now
}

void CFileSearchInfo::Reset() {
  DestroyHeaders();
  RemoveAll();
}

void CFileSearchInfo::operator+=(const CFileSearchInfo& other) {
  // Looked up beforehand: a record may be appended to itself.
  for (const CZebFileInfo* header : other.Headers()) {
    Append(std::make_unique<CZebFileInfo>(*header));
  }
}

void CFileSearchInfo::operator=(const CFileSearchInfo& other) {
  if (&other == this) return;
  if (m_criteria == nullptr) m_criteria = std::make_unique<CSearchParam>();
  if (other.m_criteria != nullptr) *m_criteria = *other.m_criteria;
  const std::size_t entries = GetCount();
  Reset();
  for (std::size_t i = 0; i < entries; ++i) AddTail(nullptr);
  *this += other;
}

int CFileSearchInfo::operator==(const CSearchParam& criteria) const {
  return m_criteria != nullptr ? *m_criteria == criteria : 0;
}

int CFileSearchInfo::operator==(const CFileSearchInfo& other) const {
  return other.m_criteria != nullptr ? *this == *other.m_criteria : 0;
}

DWORD CFileSearchInfo::GetSize(int start, int count) const {
  DWORD bytes = kSliceBytes + (m_criteria != nullptr ? m_criteria->GetSize() : 0);
  const auto headers = Headers();
  if (start < 0 || start >= CountOf(headers)) return bytes;
  count = std::min(count, CountOf(headers) - start);
  for (int i = 0; i < count; ++i)
    bytes += WriteBytes(*headers[static_cast<std::size_t>(start + i)]);
  return bytes;
}

DWORD CFileSearchInfo::Write(BYTE*& cursor, int& start, int& count) const {
  if (m_criteria == nullptr) return 0;
  const BYTE* const begin = cursor;
  const auto headers = Headers();
  if (start < 0 || start >= CountOf(headers)) {
    start = 0;
    count = 0;
  }
  count = std::min(count, CountOf(headers) - start);
  cursor += m_criteria->Write(cursor);
  ByteWriter slice({cursor, kSliceBytes});
  slice.Put(start);
  slice.Put(count);
  cursor += kSliceBytes;
  for (int i = 0; i < count; ++i) headers[static_cast<std::size_t>(start + i)]->Write(cursor);
  return static_cast<DWORD>(cursor - begin);
}

DWORD CFileSearchInfo::Read(BYTE*& cursor, int& start, int& count) {
  return Read(cursor, UnknownEnd(cursor), start, count);
}

DWORD CFileSearchInfo::Read(BYTE*& cursor, const BYTE* end, int& start, int& count) {
  const BYTE* const begin = cursor;
  try {
    if (m_criteria == nullptr) m_criteria = std::make_unique<CSearchParam>();
    const DWORD criteria_bytes = m_criteria->Read(cursor, end);
    if (criteria_bytes == 0) return 0;
    cursor += criteria_bytes;
    ByteReader slice({cursor, end});
    const int read_start = slice.Get<int>();
    const int read_count = slice.Get<int>();
    if (!slice.Ok()) return 0;
    start = read_start;
    count = read_count;
    cursor += kSliceBytes;
    for (int i = 0; i < count; ++i) {
      auto header = std::make_unique<CZebFileInfo>();
      if (header->Read(cursor, end) == 0) return 0;
      Append(std::move(header));
    }
  } catch (const std::bad_alloc& failure) {
    ReportError(failure);
    return 0;
  }
  return static_cast<DWORD>(cursor - begin);
}

std::vector<const CZebFileInfo*> CFileSearchInfo::Headers() const {
  std::vector<const CZebFileInfo*> headers;
  headers.reserve(GetCount());
  for (const CObject* entry : *this) {
    if (entry != nullptr) headers.push_back(static_cast<const CZebFileInfo*>(entry));
  }
  return headers;
}

void CFileSearchInfo::DestroyHeaders() {
  for (const CObject* entry : *this) delete entry;
}
