// Pictures as PNG files, which every viewer opens.
#pragma once

#include <string>

#include "image/image.h"
#include "platform/noxcodec/software/picture.h"
#include "tools/zebtool/files/output_file.h"

namespace zebtool {

// Writes a 24-bit picture. Throws JobError, with nothing left of the file, when it cannot be
// written whole.
void WritePng(const std::string& path, Existing existing,
              const zebx::noxcodec::PictureView& picture);
// The picture of a snapshot, without its names and times.
void WritePng(const std::string& path, Existing existing, const CImage& image);
// Throws JobError for what is no such picture.
CImage ReadPng(const std::string& path);

}  // namespace zebtool
