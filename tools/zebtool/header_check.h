// The main header of a recording, field by field.
#pragma once

#include <vector>

#include "record/zeb_file_info.h"
#include "tools/zebtool/recording_scan.h"

class CFile;

namespace zebtool {

// Where the fields of the header stand in the file.
inline constexpr ULONGLONG kVersionAt = 4;
inline constexpr ULONGLONG kHeaderSizeAt = 8;
inline constexpr ULONGLONG kFlagsAt = 12;
inline constexpr ULONGLONG kReservedWordAt = 16;
inline constexpr ULONGLONG kFrameSizeAt = 22;
inline constexpr ULONGLONG kReservedByteAt = 23;
inline constexpr ULONGLONG kEndTimeAt = 28;
inline constexpr ULONGLONG kBeginTimeStampAt = 32;
inline constexpr ULONGLONG kGmtAt = 36;
inline constexpr ULONGLONG kTextsAt = 40;
inline constexpr std::size_t kTexts = 3;

struct HeaderCheck {
  bool readable = false;  // the library takes the header
  CZebFileInfo info;
  ULONGLONG first_block = 0;  // where the chain begins, as the header says
  std::vector<Finding> findings;
};

HeaderCheck CheckHeader(CFile& file);

}  // namespace zebtool
