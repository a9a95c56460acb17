#include "record/zeb_file_info.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "record/header_format.h"

using namespace zebx;

static_assert(CZebFileInfo::kMaxTextBytes == RecordingHeader::kMaxNameBytes);

namespace {

// Of the buffer form, without the characters of its four texts.
constexpr DWORD kBufferFixedBytes = 42;

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
  return file.Open(path, CFile::kModeRead | CFile::kShareDenyNone) != 0 ? Create(file, path) : 0;
}

int CZebFileInfo::Create(CFile& file, const CString& path) {
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
  return static_cast<DWORD>(RecordingHeader::kMinBytes) +
         RecordingHeader::StoredBytes(m_camera_name) + RecordingHeader::StoredBytes(m_board_name) +
         RecordingHeader::StoredBytes(m_host_name);
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
  std::array<BYTE, RecordingHeader::kMaxBytes> buffer;
  const std::size_t count = file.Read(buffer);
  RecordingHeader header;
  const std::size_t header_bytes = header.Parse({buffer.data(), count});
  if (header_bytes == 0) return 0;

  m_file_version = header.m_version;
  m_header_size = header.m_size;
  m_flags = header.m_flags;
  m_reserved = header.m_reserved_word;
  m_camera_index = header.m_camera_index;
  m_board_index = header.m_board_index;
  m_begin_time = CTime(header.m_begin_time);
  m_end_time = CTime(header.m_end_time);
  m_begin_time_stamp = header.m_begin_time_stamp;
  m_gmt = header.m_gmt;
  SetFrameSize(tag_FRAMESIZE{header.m_frame_size});
  m_camera_name = std::move(header.m_names[0]);
  m_board_name = std::move(header.m_names[1]);
  m_host_name = std::move(header.m_names[2]);
  file.Seek(start + header_bytes);
  return static_cast<DWORD>(header_bytes);
}

DWORD CZebFileInfo::WriteTo(CFile& file) {
  RecordingHeader header;
  header.m_version = m_file_version;
  header.m_flags = m_flags;
  header.m_reserved_word = m_reserved;
  header.m_camera_index = m_camera_index;
  header.m_board_index = m_board_index;
  header.m_frame_size = m_frame_size;
  header.m_begin_time = m_begin_time.GetTime();
  header.m_end_time = m_end_time.GetTime();
  header.m_begin_time_stamp = m_begin_time_stamp;
  header.m_gmt = m_gmt;
  header.m_names = {m_camera_name, m_board_name, m_host_name};
  std::array<BYTE, RecordingHeader::kMaxBytes> buffer;
  const auto bytes = header.Format(buffer);
  m_header_size = header.m_size;
  file.Write(bytes);
  return m_header_size;
}

DWORD CZebFileInfo::GetSizeForWrite() const {
  return kBufferFixedBytes + RecordingHeader::StoredBytes(m_camera_name) +
         RecordingHeader::StoredBytes(m_board_name) + RecordingHeader::StoredBytes(m_file_name) +
         RecordingHeader::StoredBytes(m_host_name);
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
  return static_cast<int>(m_flags & RecordingHeader::kRemote);
}
void CZebFileInfo::SetRemote(int remote) {
  SetFlagBit(RecordingHeader::kRemote, remote);
}
int CZebFileInfo::IsClip() const {
  return static_cast<int>(m_flags & RecordingHeader::kClip);
}
void CZebFileInfo::SetClip(int clip) {
  SetFlagBit(RecordingHeader::kClip, clip);
}
int CZebFileInfo::IsRT8Port() const {
  return static_cast<int>(m_flags & RecordingHeader::kRT8Port);
}
void CZebFileInfo::SetRT8Port() {
  SetFlagBit(RecordingHeader::kRT8Port, 1);
}

void CZebFileInfo::SetFlagBit(DWORD bit, int on) {
  m_flags = on != 0 ? m_flags | bit : m_flags & ~bit;
}
