#include "recovery/header_recovery.h"

#include <algorithm>
#include <array>

#include "capture/picture_formats.h"
#include "platform/framework/file.h"
#include "platform/framework/mem_file.h"

namespace zebx {
namespace {

constexpr LONG kMsPerSecond = 1000;
// Stamps further apart than this have nothing to do with each other.
constexpr LONG kRelatedMs = 60 * 60 * kMsPerSecond;

// Every field that makes sense, in a header that CZebFileInfo takes.
CZebFileInfo Rebuild(RecordingHeader header, std::vector<HeaderRemark>& remarks) {
  header.m_version = 0;
  header.m_flags &= RecordingHeader::kKnownFlags;
  header.m_reserved_word = 0;
  if (zebxGetVideoStd(header.m_frame_size) == kNoVideoStandard) {
    remarks.push_back(HeaderRemark::kFrameSizeReplaced);
    header.m_frame_size = kSalvagedFrameSize;
  }
  std::array<BYTE, RecordingHeader::kMaxBytes> buffer;
  CMemFile file;
  file.Write(header.Format(buffer));
  file.SeekToBegin();
  CZebFileInfo info;
  info.ReadFrom(file);
  if (header.m_gmt < 0 || header.m_gmt >= kHoursOfDay) info.SetBeginTime(info.GetBeginTime());
  return info;
}

}  // namespace

FirstBlock FindFirstBlock(const HeaderCheck& check, RecordingBytes& bytes) {
  if (check.readable) {
    const ULONGLONG behind_names = check.info.GetSize();
    if (check.first_block == behind_names || bytes.IsBlock(behind_names, kNoBlock)) {
      return {behind_names, true};
    }
    if (bytes.IsBlock(check.first_block, kNoBlock)) return {check.first_block, true};
  }
  const ULONGLONG offset = bytes.FindSync(RecordingHeader::kMinBytes, bytes.Length(), std::nullopt);
  return {offset, bytes.IsBlock(offset, kNoBlock)};
}

RecoveredHeader RecoverHeader(CFile& file, RecordingBytes& bytes) {
  RecoveredHeader recovered;
  const HeaderCheck check = CheckHeader(file);
  recovered.first_block = FindFirstBlock(check, bytes);
  const auto block = bytes.BlockAt(recovered.first_block.offset);
  if (recovered.first_block.at_block && block) recovered.first_block_stamp = block->m_time_stamp;

  // The names, as long as their lengths lead to the first block, or to anywhere when it is unknown.
  std::array<BYTE, RecordingHeader::kMaxBytes> raw;
  file.SeekToBegin();
  std::size_t count = file.Read(raw);
  if (recovered.first_block.at_block) {
    count = std::min<std::size_t>(count, recovered.first_block.offset);
  }
  RecordingHeader header;
  const bool is_whole = header.Parse(std::span(raw).first(count)) != 0;
  if (!header.m_has_magic) recovered.remarks.push_back(HeaderRemark::kDamaged);
  if (!is_whole && header.m_has_magic) recovered.remarks.push_back(HeaderRemark::kNamesDamaged);
  recovered.info = Rebuild(std::move(header), recovered.remarks);
  return recovered;
}

CTime BeginTimeOf(const RecoveredHeader& header, DWORD first_frame_stamp) {
  const CTime begin = header.info.GetBeginTime();
  const DWORD begin_stamp = header.info.GetBeginTimeStamp();
  const bool at_block = header.first_block.at_block;
  const auto from_begin_stamp = static_cast<LONG>(first_frame_stamp - begin_stamp);
  const auto from_creation = static_cast<LONG>(first_frame_stamp - header.first_block_stamp);
  const auto related = [](LONG ms) { return ms > -kRelatedMs && ms < kRelatedMs; };
  const auto moved = [&](LONG ms) { return begin + static_cast<DWORD>(ms / kMsPerSecond); };

  // The first frame of the first block began the recording, whatever the header's stamp says.
  if (at_block && first_frame_stamp == header.first_block_stamp) return begin;
  const bool up_to_date = at_block && begin_stamp == header.first_block_stamp;
  if (up_to_date) return header.info.GetTime(first_frame_stamp);
  if (begin_stamp != 0 && related(from_begin_stamp)) return moved(from_begin_stamp);
  if (at_block && related(from_creation)) return moved(from_creation);
  return begin;
}

}  // namespace zebx
