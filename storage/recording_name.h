// What a recording is called.
#pragma once

#include "record/zeb_file_info.h"

namespace zebx {

// In the directory "video".
CString RecordingName(const CZebFileInfo& info);
// In the directory "alarm".
CString AlarmRecordingName(const CZebFileInfo& info);

}  // namespace zebx
