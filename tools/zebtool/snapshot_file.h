// Snapshot files: pictures as BMP with where and when they were taken.
#pragma once

#include <string>

#include "image/image.h"
#include "tools/zebtool/console.h"

namespace zebtool {

// The name that a snapshot is written under: ".bmp" is added to one that does not end so.
std::string SnapshotPath(const std::string& path);

// Writes the image to SnapshotPath(path). Throws JobError, with nothing left of the file, when it
// cannot be written whole.
void SaveSnapshot(CImage& image, const std::string& path, Console& console);

}  // namespace zebtool
