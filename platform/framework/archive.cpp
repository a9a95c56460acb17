#include "platform/framework/archive.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <utility>

#include "platform/framework/byte_order.h"
#include "platform/framework/file.h"

using namespace zebx;

namespace {

using Cause = CFileException::Cause;

constexpr BYTE kLengthInWord = 0xFF;
constexpr WORD kWideText = 0xFFFE;  // marks another form of text, which is not used here
constexpr WORD kLengthInDword = 0xFFFF;
constexpr std::size_t kTextPieceBytes = 64 * 1024;

}  // namespace

CArchive::CArchive(CFile& file, Mode mode, std::size_t buffer_bytes)
    : m_file(file), m_mode(mode), m_buffer(std::max<std::size_t>(buffer_bytes, 1)) {}

CArchive::~CArchive() = default;

template <typename T>
void CArchive::PutInteger(T value) {
  std::array<BYTE, sizeof(T)> bytes{};
  ByteWriter(bytes).Put(value);
  Put(bytes.data(), bytes.size());
}

template <typename T>
T CArchive::GetInteger() {
  std::array<BYTE, sizeof(T)> bytes{};
  Get(bytes.data(), bytes.size());
  return ByteReader(bytes).Get<T>();
}

CArchive& CArchive::operator<<(WORD value) {
  PutInteger(value);
  return *this;
}

CArchive& CArchive::operator<<(std::int16_t value) {
  PutInteger(value);
  return *this;
}

CArchive& CArchive::operator<<(DWORD value) {
  PutInteger(value);
  return *this;
}

CArchive& CArchive::operator<<(LONG value) {
  PutInteger(value);
  return *this;
}

CArchive& CArchive::operator<<(const CString& text) {
  if (text.size() > std::numeric_limits<DWORD>::max()) Fail(Cause::kGeneric);
  if (text.size() < kLengthInWord) {
    PutInteger(static_cast<BYTE>(text.size()));
  } else {
    PutInteger(kLengthInWord);
    if (text.size() < kWideText) {
      PutInteger(static_cast<WORD>(text.size()));
    } else {
      PutInteger(kLengthInDword);
      PutInteger(static_cast<DWORD>(text.size()));
    }
  }
  Put(reinterpret_cast<const BYTE*>(text.data()), text.size());
  return *this;
}

CArchive& CArchive::operator>>(WORD& value) {
  value = GetInteger<WORD>();
  return *this;
}

CArchive& CArchive::operator>>(std::int16_t& value) {
  value = GetInteger<std::int16_t>();
  return *this;
}

CArchive& CArchive::operator>>(DWORD& value) {
  value = GetInteger<DWORD>();
  return *this;
}

CArchive& CArchive::operator>>(LONG& value) {
  value = GetInteger<LONG>();
  return *this;
}

CArchive& CArchive::operator>>(CString& text) {
  const DWORD length = GetTextLength();
  if (length > Remaining()) Fail(Cause::kGeneric);
  // Piece by piece: a file may claim to be longer than the bytes that can be read from it.
  CString loaded;
  while (loaded.size() < length) {
    const std::size_t begin = loaded.size();
    loaded.resize(std::min<std::size_t>(length, begin + kTextPieceBytes));
    Get(reinterpret_cast<BYTE*>(loaded.data()) + begin, loaded.size() - begin);
  }
  text = std::move(loaded);
  return *this;
}

DWORD CArchive::GetTextLength() {
  const BYTE in_byte = GetInteger<BYTE>();
  if (in_byte != kLengthInWord) return in_byte;
  const WORD in_word = GetInteger<WORD>();
  if (in_word == kWideText) Fail(Cause::kGeneric);
  return in_word != kLengthInDword ? in_word : GetInteger<DWORD>();
}

void CArchive::Close() {
  if (IsStoring() && !m_buffer.empty()) Flush();
  m_buffer.clear();
}

void CArchive::Put(const BYTE* bytes, std::size_t count) {
  if (!IsStoring() || m_buffer.empty()) Fail(Cause::kInvalidFile);
  while (count > 0) {
    if (m_used == m_buffer.size()) Flush();
    const std::size_t part = std::min(count, m_buffer.size() - m_used);
    std::copy_n(bytes, part, m_buffer.data() + m_used);
    m_used += part;
    bytes += part;
    count -= part;
  }
}

void CArchive::Get(BYTE* bytes, std::size_t count) {
  if (IsStoring() || m_buffer.empty()) Fail(Cause::kInvalidFile);
  while (count > 0) {
    if (m_used == m_filled) {
      m_used = 0;
      m_filled = 0;  // nothing is there when reading throws
      m_filled = m_file.Read(m_buffer);
      if (m_filled == 0) Fail(Cause::kGeneric);
    }
    const std::size_t part = std::min(count, m_filled - m_used);
    std::copy_n(m_buffer.data() + m_used, part, bytes);
    m_used += part;
    bytes += part;
    count -= part;
  }
}

void CArchive::Flush() {
  m_file.Write(std::span<const BYTE>(m_buffer).first(m_used));
  m_used = 0;
}

// Bytes that can still be loaded.
ULONGLONG CArchive::Remaining() const {
  const ULONGLONG length = m_file.GetLength();
  const ULONGLONG position = m_file.GetPosition();
  return m_filled - m_used + (length > position ? length - position : 0);
}

void CArchive::Fail(CFileException::Cause cause) const {
  throw CFileException(cause, 0, m_file.GetFilePath());
}
