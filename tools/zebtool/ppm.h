// Pictures as PPM files, which every viewer opens.
#pragma once

#include "platform/noxcodec/software/picture.h"
#include "tools/zebtool/byte_streams.h"

namespace zebtool {

// As binary PPM (P6), 24 bits a pixel.
void WritePpm(OutputStream& output, const zebx::noxcodec::PictureView& picture);

}  // namespace zebtool
