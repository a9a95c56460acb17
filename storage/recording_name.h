// What a recording is called.
#pragma once

#include "platform/framework/export.h"
#include "record/zeb_file_info.h"

namespace zebx {

// In the directory "video".
ZEBX_API CString RecordingName(const CZebFileInfo& info);
// In the directory "alarm".
ZEBX_API CString AlarmRecordingName(const CZebFileInfo& info);

}  // namespace zebx
