// The picture sizes of a recording.
#pragma once

#include "record/zeb_file_info.h"

namespace zebtool {

struct PictureSize {
  DWORD width = 0;
  DWORD height = 0;
};

// Of the compressed stream; 0 x 0 for a frame size that does not exist.
PictureSize EncodeSizeOf(const CZebFileInfo& info);
// As players show it. RT8Port boards have sizes of their own for some frame sizes and say nothing
// about the others, which are then as usual.
PictureSize ShowSizeOf(const CZebFileInfo& info);

}  // namespace zebtool
