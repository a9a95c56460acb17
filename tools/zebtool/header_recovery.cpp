#include "tools/zebtool/header_recovery.h"

#include <array>
#include <string_view>

#include "platform/framework/byte_order.h"
#include "platform/framework/file.h"
#include "platform/framework/mem_file.h"
#include "tools/zebtool/header_check.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::size_t kMaxHeaderBytes =
    kTextsAt + kTexts * (sizeof(DWORD) + CZebFileInfo::kMaxTextBytes);
constexpr std::size_t kMinHeaderBytes = kTextsAt + kTexts * sizeof(DWORD);
constexpr BYTE kUsualFrameSize = 130;
constexpr DWORD kKnownFlags = 0x7;
constexpr int kHoursOfDay = 24;
constexpr LONG kMsPerSecond = 1000;
// Stamps further apart than this have nothing to do with each other.
constexpr LONG kRelatedMs = 60 * 60 * kMsPerSecond;

using Texts = std::array<std::string, kTexts>;

// The texts, as long as their lengths lead to the first block, or to anywhere when it is unknown.
Texts ReadTexts(std::span<const BYTE> header, bool& damaged) {
  Texts texts;
  ByteReader reader(header);
  reader.Take(kTextsAt);
  for (std::string& text : texts) {
    const auto length = reader.Get<DWORD>();
    if (!reader.Ok() || length > CZebFileInfo::kMaxTextBytes || length > reader.Remaining()) {
      damaged = true;
      break;
    }
    text = reader.TakeText(length);
  }
  return texts;
}

// Every field that makes sense, in a header of its own that the library reads.
CZebFileInfo Rebuild(std::span<const BYTE> header, std::vector<std::string>& remarks) {
  bool damaged = false;
  const Texts texts = ReadTexts(header, damaged);
  if (damaged) remarks.emplace_back("the names of camera, board and host are damaged");

  ByteReader reader(header);
  if (reader.TakeText(4) != "XBEZ") remarks.emplace_back("the header is damaged");
  reader.Get<DWORD>();  // version
  reader.Get<DWORD>();  // header size
  const DWORD flags = reader.Get<DWORD>() & kKnownFlags;
  reader.Get<DWORD>();  // reserved
  const auto camera_and_board = reader.Get<WORD>();
  auto frame_size = reader.Get<BYTE>();
  if (zebxGetVideoStd(frame_size) == kNoVideoStandard) {
    remarks.emplace_back("the frame size is damaged; 130 (352 x 288) takes its place");
    frame_size = kUsualFrameSize;
  }
  reader.Get<BYTE>();  // reserved
  const auto begin_time = reader.Get<DWORD>();
  const auto end_time = reader.Get<DWORD>();
  const auto begin_stamp = reader.Get<DWORD>();
  const auto gmt = reader.Get<LONG>();

  std::array<BYTE, kMaxHeaderBytes> rebuilt{};
  ByteWriter writer(rebuilt);
  writer.PutText("XBEZ");
  writer.Put(DWORD{0});
  writer.Put(DWORD{0});
  writer.Put(flags);
  writer.Put(DWORD{0});
  writer.Put(camera_and_board);
  writer.Put(frame_size);
  writer.Put(BYTE{0});
  writer.Put(begin_time);
  writer.Put(end_time);
  writer.Put(begin_stamp);
  writer.Put(gmt);
  for (const std::string& text : texts) {
    writer.Put(static_cast<DWORD>(text.size()));
    writer.PutText(text);
  }
  CMemFile file;
  file.Write(std::span(rebuilt).first(writer.Written()));
  file.SeekToBegin();
  CZebFileInfo info;
  info.Read(&file);
  if (gmt < 0 || gmt >= kHoursOfDay) info.SetBeginTime(info.GetBeginTime());
  return info;
}

// Where the chain begins: where the header says twice that it ends, or else wherever the first
// block or frames are recognised.
void FindFirstBlock(const HeaderCheck& check, RecordingBytes& bytes, RecoveredHeader& recovered) {
  const bool agrees = check.readable && check.first_block == check.info.GetSize();
  if (agrees || (check.readable && bytes.IsBlock(check.first_block, kNoBlock))) {
    recovered.first_block = check.first_block;
    recovered.at_block = true;
  } else {
    recovered.first_block = bytes.FindSync(kMinHeaderBytes, bytes.Length());
    recovered.at_block = bytes.IsBlock(recovered.first_block, kNoBlock);
  }
  const auto block = bytes.BlockAt(recovered.first_block);
  if (recovered.at_block && block) recovered.first_block_stamp = block->m_time_stamp;
}

}  // namespace

RecoveredHeader RecoverHeader(CFile& file, RecordingBytes& bytes) {
  RecoveredHeader recovered;
  const HeaderCheck check = CheckHeader(file);
  FindFirstBlock(check, bytes, recovered);
  std::array<BYTE, kMaxHeaderBytes> raw{};
  file.SeekToBegin();
  std::size_t count = file.Read(raw);
  if (recovered.at_block) count = std::min<std::size_t>(count, recovered.first_block);
  recovered.info = Rebuild(std::span(raw).first(count), recovered.remarks);
  return recovered;
}

CTime BeginTimeOf(const RecoveredHeader& header, DWORD first_frame_stamp) {
  const CTime begin = header.info.GetBeginTime();
  const DWORD begin_stamp = header.info.GetBeginTimeStamp();
  const auto from_begin_stamp = static_cast<LONG>(first_frame_stamp - begin_stamp);
  const auto from_creation = static_cast<LONG>(first_frame_stamp - header.first_block_stamp);
  const auto related = [](LONG ms) { return ms > -kRelatedMs && ms < kRelatedMs; };
  const auto moved = [&](LONG ms) { return begin + static_cast<DWORD>(ms / kMsPerSecond); };

  const bool up_to_date = header.at_block && begin_stamp == header.first_block_stamp;
  if (up_to_date) return header.info.GetTime(first_frame_stamp);
  if (begin_stamp != 0 && related(from_begin_stamp)) return moved(from_begin_stamp);
  if (header.at_block && related(from_creation)) return moved(from_creation);
  return begin;
}

}  // namespace zebtool
