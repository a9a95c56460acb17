// Snapshot files: pictures as BMP with where and when they were taken, or as plain PNG.
#pragma once

#include <string>

#include "image/image.h"
#include "tools/zebtool/files/output_file.h"

namespace zebtool {

// The name that a snapshot is written under: ".bmp" is added to one that ends with neither ".bmp"
// nor ".png".
std::string SnapshotPath(const std::string& path);

// Writes the image to SnapshotPath(path); PNG leaves out the names and times. Throws JobError, with
// nothing left of the file, when it cannot be written whole.
void SaveSnapshot(CImage& image, const std::string& path, Existing existing);

}  // namespace zebtool
