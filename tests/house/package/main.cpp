#include <zebx/zebx.h>

int main() {
  CZebFileInfo info;
  info.SetFrameSize(tag_FRAMESIZE{128});
  return info.GetWidth() == 176 && info.GetHeight() == 144 ? 0 : 1;
}
