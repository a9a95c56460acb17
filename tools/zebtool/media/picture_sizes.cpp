#include "tools/zebtool/media/picture_sizes.h"

#include "capture/picture_formats.h"

namespace zebtool {

PictureSize EncodeSizeOf(const CZebFileInfo& info) {
  PictureSize size;
  zebxGetEncodeSize(info.GetFrameSize(), &size.width, &size.height);
  return size;
}

PictureSize ShowSizeOf(const CZebFileInfo& info) {
  PictureSize size{info.GetWidth(), info.GetHeight()};
  if (size.width == 0) zebxGetShowSize(info.GetFrameSize(), &size.width, &size.height);
  return size;
}

}  // namespace zebtool
