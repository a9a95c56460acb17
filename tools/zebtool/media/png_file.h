// Pictures as PNG files, which every viewer opens.
#pragma once

#include <string>

#include "platform/noxcodec/software/picture.h"
#include "tools/zebtool/files/output_file.h"

class CImage;

namespace zebtool {

// Writes a 24-bit picture. Throws JobError, with nothing left of the file, when it cannot be
// written whole.
void WritePng(const std::string& path, Existing existing,
              const zebx::noxcodec::PictureView& picture);
// The picture of a snapshot, without its names and times.
void WritePng(const std::string& path, Existing existing, const CImage& image);

}  // namespace zebtool
