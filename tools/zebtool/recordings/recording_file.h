// Opening recordings that are to be looked at and never changed.
#pragma once

#include <string>

#include "platform/framework/file.h"
#include "record/zeb_file.h"

namespace zebtool {

// Opens the raw bytes, also while they are being written. Throws JobError.
void OpenRecording(CFile& file, const std::string& path);

// Opens the recording through the library. Throws JobError.
void OpenRecording(CZebFile& file, const std::string& path);

}  // namespace zebtool
