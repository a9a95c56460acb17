#include "storage/search_param.h"

#include <string_view>

#include "platform/framework/byte_order.h"

using namespace zebx;

namespace {

constexpr std::size_t kTextLengths = 0x100;  // a text's length is one byte

// What the flat form keeps of a text.
std::string_view CutText(std::string_view text) {
  return text.substr(0, text.size() % kTextLengths);
}

void PutText(ByteWriter& writer, const CString& text) {
  const std::string_view cut = CutText(text);
  writer.Put(static_cast<BYTE>(cut.size()));
  writer.PutText(cut);
}

CString TakeText(ByteReader& reader) {
  CString text = reader.TakeText(reader.Get<BYTE>());
  if (const auto zero = text.find('\0'); zero != CString::npos) text.resize(zero);
  return text;
}

}  // namespace

CSearchParam::CSearchParam() = default;
CSearchParam::CSearchParam(const CSearchParam&) = default;
CSearchParam& CSearchParam::operator=(const CSearchParam&) = default;
CSearchParam::~CSearchParam() = default;

void CSearchParam::Reset() {
  *this = CSearchParam();
}

int CSearchParam::operator==(const CSearchParam& other) const {
  if (m_flags != other.m_flags) return 0;
  const auto differs = [this](DWORD flags, const auto& mine, const auto& theirs) {
    return IsSearch(flags) != 0 && !(mine == theirs);
  };
  if (differs(kSearchHostName, m_host_name, other.m_host_name) ||
      differs(kSearchDbsName, m_dbs_name, other.m_dbs_name) ||
      differs(kSearchBoardName, m_board_name, other.m_board_name) ||
      differs(kSearchCameraName, m_camera_name, other.m_camera_name) ||
      differs(kSearchDate, m_date, other.m_date) ||
      // On purpose: criteria that differ in the beginning of their range alone are equal to hosts.
      differs(kSearchBeginTime | kSearchComparesBeginTime, m_begin_time, other.m_begin_time) ||
      differs(kSearchEndTime, m_end_time, other.m_end_time) ||
      differs(kSearchFrameSize, m_frame_size, other.m_frame_size) ||
      differs(kSearchTimeBegin, m_begin_time, other.m_begin_time) ||
      differs(kSearchCameraID, m_camera_id, other.m_camera_id)) {
    return 0;
  }
  return 1;
}

DWORD CSearchParam::GetSize() const {
  std::size_t bytes = sizeof(DWORD) + 1 + CutText(m_host_name).size();
  if (IsSearch(kSearchDbsName)) bytes += 1 + CutText(m_dbs_name).size();
  for (const DWORD flag :
       {kSearchCameraID, kSearchDate, kSearchTimeBegin, kSearchBeginTime, kSearchEndTime}) {
    if (IsSearch(flag)) bytes += sizeof(DWORD);
  }
  return static_cast<DWORD>(bytes);
}

DWORD CSearchParam::Write(BYTE*& cursor) const {
  ByteWriter writer({cursor, GetSize()});
  writer.Put(m_flags);
  PutText(writer, m_host_name);  // also when it was never set
  if (IsSearch(kSearchDbsName)) PutText(writer, m_dbs_name);
  if (IsSearch(kSearchCameraID)) {
    writer.Put(m_camera_id.m_board);
    writer.Put(m_camera_id.m_camera);
  }
  if (IsSearch(kSearchDate)) writer.Put(m_date);
  if (IsSearch(kSearchTimeBegin)) writer.Put(m_begin_time.GetTime());
  if (IsSearch(kSearchBeginTime)) writer.Put(m_begin_time.GetTime());
  if (IsSearch(kSearchEndTime)) writer.Put(m_end_time.GetTime());
  return static_cast<DWORD>(writer.Written());
}

DWORD CSearchParam::Read(BYTE*& cursor) {
  return Read(cursor, UnknownEnd(cursor));
}

DWORD CSearchParam::Read(BYTE*& cursor, const BYTE* end) {
  const std::span<const BYTE> bytes(cursor, end);
  ByteReader reader(bytes);
  CSearchParam read = *this;
  read.m_flags = reader.Get<DWORD>();
  read.m_host_name = TakeText(reader);
  if (read.IsSearch(kSearchDbsName)) read.m_dbs_name = TakeText(reader);
  if (read.IsSearch(kSearchCameraID)) {
    read.m_camera_id.m_board = reader.Get<WORD>();
    read.m_camera_id.m_camera = reader.Get<WORD>();
  }
  if (read.IsSearch(kSearchDate)) read.m_date = reader.Get<DWORD>();
  if (read.IsSearch(kSearchTimeBegin)) read.m_begin_time = CTime(reader.Get<DWORD>());
  if (read.IsSearch(kSearchBeginTime)) read.m_begin_time = CTime(reader.Get<DWORD>());
  if (read.IsSearch(kSearchEndTime)) read.m_end_time = CTime(reader.Get<DWORD>());
  if (!reader.Ok()) return 0;
  *this = read;
  return static_cast<DWORD>(bytes.size() - reader.Remaining());
}
