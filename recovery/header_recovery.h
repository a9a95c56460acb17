// What can still be told of a recording whose header may be damaged.
#pragma once

#include <vector>

#include "record/zeb_file_info.h"
#include "recovery/header_check.h"
#include "recovery/recording_bytes.h"
#include "recovery/salvage.h"

namespace zebx {

// Where the frames begin; a block header stands there when `at_block`.
struct FirstBlock {
  ULONGLONG offset = 0;
  bool at_block = false;
};

// Where the header says twice that it ends, or else wherever the first block or frames are
// recognised.
FirstBlock FindFirstBlock(const HeaderCheck& check, RecordingBytes& bytes);

struct RecoveredHeader {
  CZebFileInfo info;  // free of damage, ready to head a new file
  FirstBlock first_block;
  DWORD first_block_stamp = 0;
  std::vector<HeaderRemark> remarks;
};

// Throws CFileException.
RecoveredHeader RecoverHeader(CFile& file, RecordingBytes& bytes);

// The moment of a frame that becomes the first of a new file. A header that was never brought up to
// date knows the moment of the creation only, by the first block's stamp.
CTime BeginTimeOf(const RecoveredHeader& header, DWORD first_frame_stamp);

}  // namespace zebx
