// What can still be told of a recording whose header may be damaged.
#pragma once

#include <string>
#include <vector>

#include "record/zeb_file_info.h"
#include "tools/zebtool/recording_bytes.h"

namespace zebtool {

struct RecoveredHeader {
  CZebFileInfo info;          // free of damage, ready to head a new file
  ULONGLONG first_block = 0;  // where to begin; a block header stands there when at_block
  bool at_block = false;
  DWORD first_block_stamp = 0;
  std::vector<std::string> remarks;  // what had to be replaced, one line each
};

// Throws CFileException.
RecoveredHeader RecoverHeader(CFile& file, RecordingBytes& bytes);

// The moment of a frame that becomes the first of a new file. A header that was never brought up to
// date knows the moment of the creation only, by the first block's stamp.
CTime BeginTimeOf(const RecoveredHeader& header, DWORD first_frame_stamp);

}  // namespace zebtool
