#include "record/zeb_file_info.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "record/frame_format.h"

using namespace zebx;

namespace {

constexpr std::array<BYTE, 4> kMagic = {'X', 'B', 'E', 'Z'};
constexpr std::size_t kFixedBytes = 40;  // up to the first text's length
constexpr std::size_t kTexts = 3;
constexpr std::size_t kMaxHeaderBytes =
    kFixedBytes + kTexts * (sizeof(DWORD) + CZebFileInfo::kMaxTextBytes);
// Of the buffer form, without the characters of its four texts.
constexpr DWORD kBufferFixedBytes = 42;

enum : DWORD { kRemote = 0x1, kClip = 0x2, kRT8Port = 0x4 };

DWORD CutBytes(const CString& text) {
  return static_cast<DWORD>(std::min<std::size_t>(text.size(), CZebFileInfo::kMaxTextBytes));
}

// RT8Port boards deliver fields of their own sizes.
std::pair<DWORD, DWORD> RT8PortSize(BYTE frame_size) {
  switch (frame_size) {
    case 3:
      return {640, 480};
    case 7:
      return {704, 480};
    case 131:
    case 135:
      return {704, 576};
    default:
      return {0, 0};
  }
}

}  // namespace

CZebFileInfo::CZebFileInfo() = default;
CZebFileInfo::CZebFileInfo(const CZebFileInfo&) = default;
CZebFileInfo& CZebFileInfo::operator=(const CZebFileInfo&) = default;
CZebFileInfo::~CZebFileInfo() = default;

int CZebFileInfo::GetFrameNumOfBlock(int) const {
  return 0;
}
int CZebFileInfo::GetTotalBlock() const {
  return 0;
}
int CZebFileInfo::GetTotalFrame() const {
  return 0;
}
int CZebFileInfo::GetFrameIndex(int, int) const {
  return 0;
}
int CZebFileInfo::GetFrameIndexOfBlock(int) const {
  return 0;
}

int CZebFileInfo::Create(const CString& path) {
  CFile file;
  if (file.Open(path, CFile::kModeRead | CFile::kShareDenyNone) == 0) return 0;
  try {
    m_length = static_cast<DWORD>(file.GetLengthAtOpening());
  } catch (const CFileException& failure) {
    ReportError(failure);
    return 0;
  }
  if (Read(&file) == 0) return 0;
  m_file_name = path;
  return 1;
}

DWORD CZebFileInfo::GetSize() const {
  return static_cast<DWORD>(kFixedBytes + kTexts * sizeof(DWORD)) + CutBytes(m_camera_name) +
         CutBytes(m_board_name) + CutBytes(m_host_name);
}

DWORD CZebFileInfo::Read(CFile* file) {
  if (file == nullptr) return 0;
  try {
    return ReadFrom(*file);
  } catch (const CFileException& failure) {
    ReportError(failure);
    return 0;
  }
}

DWORD CZebFileInfo::Write(CFile* file) {
  if (file == nullptr) return 0;
  try {
    return WriteTo(*file);
  } catch (const CFileException& failure) {
    ReportError(failure);
    return 0;
  }
}

DWORD CZebFileInfo::ReadFrom(CFile& file) {
  const ULONGLONG start = file.GetPosition();
  std::array<BYTE, kMaxHeaderBytes> buffer;
  const std::size_t count = file.Read(buffer);
  ByteReader reader({buffer.data(), count});
  if (!std::ranges::equal(reader.Take(kMagic.size()), kMagic)) return 0;

  m_file_version = reader.Get<DWORD>();
  m_header_size = reader.Get<DWORD>();
  m_flags = reader.Get<DWORD>();
  m_reserved = reader.Get<DWORD>();
  m_camera_index = reader.Get<BYTE>();
  m_board_index = reader.Get<BYTE>();
  const auto frame_size = reader.Get<BYTE>();
  reader.Get<BYTE>();  // reserved
  m_begin_time = CTime(reader.Get<DWORD>());
  m_end_time = CTime(reader.Get<DWORD>());
  m_begin_time_stamp = reader.Get<DWORD>();
  m_gmt = reader.Get<int>();
  SetFrameSize(tag_FRAMESIZE{frame_size});
  for (CString* text : {&m_camera_name, &m_board_name, &m_host_name}) {
    const auto bytes = reader.Get<DWORD>();
    if (bytes > kMaxTextBytes) return 0;
    *text = reader.TakeText(bytes);
  }
  if (!reader.Ok()) return 0;
  const std::size_t header_bytes = count - reader.Remaining();
  file.Seek(start + header_bytes);
  return static_cast<DWORD>(header_bytes);
}

DWORD CZebFileInfo::WriteTo(CFile& file) {
  m_header_size = GetSize();
  std::array<BYTE, kMaxHeaderBytes> buffer;
  ByteWriter writer(buffer);
  writer.PutBytes(kMagic);
  writer.Put(m_file_version);
  writer.Put(m_header_size);
  writer.Put(m_flags);
  writer.Put(m_reserved);
  writer.Put(m_camera_index);
  writer.Put(m_board_index);
  writer.Put(m_frame_size);
  writer.Put(BYTE{0});  // reserved
  writer.Put(m_begin_time.GetTime());
  writer.Put(m_end_time.GetTime());
  writer.Put(m_begin_time_stamp);
  writer.Put(m_gmt);
  for (const CString* text : {&m_camera_name, &m_board_name, &m_host_name}) {
    writer.Put(CutBytes(*text));
    writer.PutText({text->data(), CutBytes(*text)});
  }
  file.Write(std::span(buffer).first(writer.Written()));
  return m_header_size;
}

DWORD CZebFileInfo::GetSizeForWrite() const {
  return kBufferFixedBytes + CutBytes(m_camera_name) + CutBytes(m_board_name) +
         CutBytes(m_file_name) + CutBytes(m_host_name);
}

DWORD CZebFileInfo::Write(BYTE*& cursor) const {
  const std::size_t bytes = kBufferFixedBytes + m_camera_name.size() + m_board_name.size() +
                            m_file_name.size() + m_host_name.size();
  ByteWriter writer({cursor, bytes});
  writer.Put(m_camera_index);
  writer.Put(m_board_index);
  writer.Put(m_width);
  writer.Put(m_height);
  writer.Put(m_begin_time.GetTime());
  writer.Put(m_end_time.GetTime());
  writer.Put(m_length);
  for (const CString* text : {&m_camera_name, &m_board_name, &m_file_name, &m_host_name}) {
    writer.Put(static_cast<DWORD>(text->size()));
    writer.PutText(*text);
  }
  writer.Put(m_gmt);
  cursor += writer.Written();
  return static_cast<DWORD>(writer.Written());
}

DWORD CZebFileInfo::Read(BYTE*& cursor) {
  return Read(cursor, UnknownEnd(cursor));
}

DWORD CZebFileInfo::Read(BYTE*& cursor, const BYTE* end) {
  const std::span<const BYTE> bytes(cursor, end);
  ByteReader reader(bytes);
  CZebFileInfo read = *this;
  read.m_camera_index = reader.Get<BYTE>();
  read.m_board_index = reader.Get<BYTE>();
  read.m_width = reader.Get<DWORD>();
  read.m_height = reader.Get<DWORD>();
  read.m_begin_time = CTime(reader.Get<DWORD>());
  read.m_end_time = CTime(reader.Get<DWORD>());
  read.m_length = reader.Get<DWORD>();
  for (CString* text :
       {&read.m_camera_name, &read.m_board_name, &read.m_file_name, &read.m_host_name}) {
    *text = reader.TakeText(reader.Get<DWORD>());
  }
  read.m_gmt = reader.Get<int>();
  if (!reader.Ok()) return 0;
  CZebFileInfo::operator=(read);
  const std::size_t consumed = bytes.size() - reader.Remaining();
  cursor += consumed;
  return static_cast<DWORD>(consumed);
}

void CZebFileInfo::SetCameraID(tag_ZEBCAMERAID id) {
  m_board_index = static_cast<BYTE>(id.m_board);
  m_camera_index = static_cast<BYTE>(id.m_camera);
}

void CZebFileInfo::SetBeginTime(CTime time) {
  constexpr int kHoursOfDay = 24;
  m_begin_time = time;
  const int difference = time.GetGmtTm().tm_hour - time.GetLocalTm().tm_hour;
  m_gmt = difference < 0 ? difference + kHoursOfDay : difference;
}

void CZebFileInfo::SetFrameSize(tag_FRAMESIZE frame_size) {
  m_frame_size = static_cast<BYTE>(frame_size);
  if (!IsRT8Port()) {
    zebxGetShowSize(frame_size, &m_width, &m_height);
  } else if (const auto [width, height] = RT8PortSize(m_frame_size); width != 0) {
    m_width = width;
    m_height = height;
  }
}

int CZebFileInfo::IsRemote() const {
  return static_cast<int>(m_flags & kRemote);
}
void CZebFileInfo::SetRemote(int remote) {
  SetFlagBit(kRemote, remote);
}
int CZebFileInfo::IsClip() const {
  return static_cast<int>(m_flags & kClip);
}
void CZebFileInfo::SetClip(int clip) {
  SetFlagBit(kClip, clip);
}
int CZebFileInfo::IsRT8Port() const {
  return static_cast<int>(m_flags & kRT8Port);
}
void CZebFileInfo::SetRT8Port() {
  SetFlagBit(kRT8Port, 1);
}

void CZebFileInfo::SetFlagBit(DWORD bit, int on) {
  m_flags = on != 0 ? m_flags | bit : m_flags & ~bit;
}
