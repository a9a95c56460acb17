// A host with names of its own that the library has too.
#include "image/image.h"

#include <zebx/zebx.h>

struct Clock : FrameHeader {};
struct FileSystem : Clock {};
struct BlockIndex : FileSystem {};

int main() {
  [[maybe_unused]] const BlockIndex ours;
  CZebFileInfo info;
  info.SetFrameSize(tag_FRAMESIZE{128});
  return info.GetWidth() == 176 && info.GetHeight() == 144 ? 0 : 1;
}
