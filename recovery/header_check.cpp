#include "recovery/header_check.h"

#include <array>

#include "capture/picture_formats.h"
#include "platform/framework/file.h"

namespace zebx {
namespace {

using Kind = Finding::Kind;

void AddDamage(HeaderCheck& check, Kind kind, ULONGLONG offset, ULONGLONG found = 0,
               ULONGLONG expected = 0) {
  check.findings.push_back({Finding::Severity::kDamage, kind, offset, -1, -1, found, expected});
}

// Why CZebFileInfo does not take the header.
void ExplainUnreadable(HeaderCheck& check, std::span<const BYTE> bytes, std::size_t bad_name_at) {
  if (bytes.empty()) {
    AddDamage(check, Kind::kEmptyFile, 0);
  } else if (!check.raw.m_has_magic) {
    AddDamage(check, Kind::kNoMagic, 0);
  } else if (bad_name_at != 0) {
    AddDamage(check, Kind::kNameTooLong, bad_name_at,
              ByteReader(bytes.subspan(bad_name_at)).Get<DWORD>(), RecordingHeader::kMaxNameBytes);
  } else {
    AddDamage(check, Kind::kHeaderCut, bytes.size());
  }
}

void CheckFields(HeaderCheck& check, std::size_t header_bytes) {
  const RecordingHeader& raw = check.raw;
  if (raw.m_size != header_bytes) {
    AddDamage(check, Kind::kHeaderSize, RecordingHeader::kSizeAt, raw.m_size, header_bytes);
  }
  if (raw.m_version != 0) {
    AddDamage(check, Kind::kVersion, RecordingHeader::kVersionAt, raw.m_version);
  }
  const DWORD known_flags = raw.m_flags & RecordingHeader::kKnownFlags;
  if (raw.m_flags != known_flags) {
    AddDamage(check, Kind::kUnknownFlags, RecordingHeader::kFlagsAt, raw.m_flags, known_flags);
  }
  if (raw.m_reserved_word != 0) {
    AddDamage(check, Kind::kReservedField, RecordingHeader::kReservedWordAt, raw.m_reserved_word);
  }
  if (raw.m_reserved_byte != 0) {
    AddDamage(check, Kind::kReservedField, RecordingHeader::kReservedByteAt, raw.m_reserved_byte);
  }
  if (zebxGetVideoStd(raw.m_frame_size) == kNoVideoStandard) {
    AddDamage(check, Kind::kFrameSize, RecordingHeader::kFrameSizeAt, raw.m_frame_size);
  }
  if (raw.m_gmt < 0 || raw.m_gmt >= kHoursOfDay) {
    AddDamage(check, Kind::kGmt, RecordingHeader::kGmtAt, static_cast<DWORD>(raw.m_gmt));
  }
}

}  // namespace

HeaderCheck CheckHeader(CFile& file) {
  HeaderCheck check;
  std::array<BYTE, RecordingHeader::kMaxBytes> buffer;
  file.SeekToBegin();
  const auto bytes = std::span(buffer).first(file.Read(buffer));
  std::size_t bad_name_at = 0;
  const std::size_t header_bytes = check.raw.Parse(bytes, &bad_name_at);
  if (header_bytes == 0) {
    ExplainUnreadable(check, bytes, bad_name_at);
    return check;
  }
  file.SeekToBegin();
  check.readable = check.info.ReadFrom(file) != 0;
  check.first_block = check.raw.m_size;
  CheckFields(check, header_bytes);
  return check;
}

}  // namespace zebx
