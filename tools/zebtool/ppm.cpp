#include "tools/zebtool/ppm.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace zebx;

namespace zebtool {
namespace {

BYTE ToByte(double value) {
  return static_cast<BYTE>(std::lround(std::clamp(value, 0.0, 255.0)));
}

}  // namespace

void WritePpm(OutputStream& output, const noxcodec::PictureView& picture) {
  output.WriteText("P6\n" + std::to_string(picture.Width()) + ' ' +
                   std::to_string(picture.Height()) + "\n255\n");
  std::vector<BYTE> row;
  for (int y = 0; y < picture.Height(); ++y) {
    row.clear();
    const int chroma_y = y / 2;
    for (int x = 0; x < picture.Width(); ++x) {
      const int chroma_x = x / 2;
      const double luma = 1.164 * (picture.planes[noxcodec::kLuma].Row(y)[x] - 16);
      const double cb = picture.planes[noxcodec::kCb].Row(chroma_y)[chroma_x] - 128;
      const double cr = picture.planes[noxcodec::kCr].Row(chroma_y)[chroma_x] - 128;
      // ITU-R BT.601
      row.push_back(ToByte(luma + 1.596 * cr));
      row.push_back(ToByte(luma - 0.392 * cb - 0.813 * cr));
      row.push_back(ToByte(luma + 2.017 * cb));
    }
    output.Write(row);
  }
}

}  // namespace zebtool
