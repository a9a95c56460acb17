// The main header of a recording, field by field.
#pragma once

#include <vector>

#include "record/header_format.h"
#include "record/zeb_file_info.h"
#include "recovery/finding.h"

class CFile;

namespace zebx {

inline constexpr int kHoursOfDay = 24;

struct HeaderCheck {
  RecordingHeader raw;        // as it stands in the file, as far as it makes sense
  bool readable = false;      // CZebFileInfo takes it
  CZebFileInfo info;          // when readable
  ULONGLONG first_block = 0;  // where the chain begins, as the header says
  std::vector<Finding> findings;
};

// Throws CFileException.
HeaderCheck CheckHeader(CFile& file);

}  // namespace zebx
