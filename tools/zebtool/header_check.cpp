#include "tools/zebtool/header_check.h"

#include <array>
#include <string>
#include <utility>

#include "capture/picture_formats.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/file.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr DWORD kKnownFlags = 0x7;
constexpr int kHoursOfDay = 24;

void AddDamage(HeaderCheck& check, ULONGLONG offset, std::string text) {
  check.findings.push_back({Finding::Kind::kDamage, offset, std::move(text)});
}

// Why the library does not take the header.
void ExplainUnreadable(CFile& file, HeaderCheck& check) {
  const std::string salvage = "; 'zebtool salvage' looks for its frames";
  std::array<BYTE, 4> magic{};
  file.SeekToBegin();
  const std::size_t count = file.Read(magic);
  if (count < magic.size() || ByteReader(magic).TakeText(magic.size()) != "XBEZ") {
    AddDamage(
        check, 0,
        count == 0
            ? "the file is empty"
            : "the file does not begin with XBEZ: it is no recording, or its header is damaged" +
                  salvage);
    return;
  }
  ULONGLONG offset = kTextsAt;
  for (std::size_t text = 0; text < kTexts; ++text) {
    std::array<BYTE, sizeof(DWORD)> bytes{};
    file.Seek(offset);
    if (file.Read(bytes) < bytes.size()) break;
    const auto length = ByteReader(bytes).Get<DWORD>();
    if (length > CZebFileInfo::kMaxTextBytes) {
      AddDamage(check, offset,
                "the header has a text of " + Plural(length, "character") + ", more than the " +
                    std::to_string(CZebFileInfo::kMaxTextBytes) + " that it may" + salvage);
      return;
    }
    offset += sizeof(DWORD) + length;
  }
  AddDamage(check, file.GetLength(), "the file ends inside its header");
}

struct RawFields {
  DWORD version, size, flags, reserved;
  BYTE frame_size, reserved_byte;
};

RawFields ReadRawFields(CFile& file) {
  std::array<BYTE, kTextsAt> bytes{};
  file.SeekToBegin();
  file.Read(bytes);
  ByteReader reader(bytes);
  RawFields raw{};
  reader.Get<DWORD>();  // magic
  raw.version = reader.Get<DWORD>();
  raw.size = reader.Get<DWORD>();
  raw.flags = reader.Get<DWORD>();
  raw.reserved = reader.Get<DWORD>();
  reader.Get<WORD>();  // camera and board
  raw.frame_size = reader.Get<BYTE>();
  raw.reserved_byte = reader.Get<BYTE>();
  return raw;
}

void CheckFields(const RawFields& raw, HeaderCheck& check) {
  if (raw.version != 0)
    AddDamage(check, kVersionAt,
              "the file version is " + std::to_string(raw.version) + "; only version 0 is known");
  if ((raw.flags & ~kKnownFlags) != 0) {
    AddDamage(check, kFlagsAt, "the header has flags that are not known");
  }
  if (raw.reserved != 0) {
    AddDamage(check, kReservedWordAt, "the header has a reserved word that is not 0");
  }
  if (raw.reserved_byte != 0) {
    AddDamage(check, kReservedByteAt, "the header has a reserved byte that is not 0");
  }
  if (zebxGetVideoStd(raw.frame_size) == kNoVideoStandard) {
    AddDamage(check, kFrameSizeAt,
              "the frame size " + std::to_string(raw.frame_size) + " does not exist");
  }
  const int gmt = check.info.GetGmt();
  if (gmt < 0 || gmt >= kHoursOfDay) {
    AddDamage(check, kGmtAt, "gmt is " + std::to_string(gmt) + " and not an hour of the day");
  }
}

}  // namespace

HeaderCheck CheckHeader(CFile& file) {
  HeaderCheck check;
  file.SeekToBegin();
  const DWORD bytes = check.info.Read(&file);
  check.readable = bytes > 0;
  if (!check.readable) {
    ExplainUnreadable(file, check);
    return check;
  }
  const RawFields raw = ReadRawFields(file);
  check.first_block = raw.size;
  if (raw.size != bytes) {
    AddDamage(check, kHeaderSizeAt,
              "the header says that it takes " + Plural(raw.size, "byte") +
                  ", but its texts end at " + FormatOffset(bytes));
  }
  CheckFields(raw, check);
  return check;
}

}  // namespace zebtool
