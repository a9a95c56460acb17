#include "tools/zebtool/ppm.h"

#include <algorithm>
#include <cmath>
#include <vector>

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
    for (int x = 0; x < picture.Width(); ++x) {
      const double luma = 1.164 * (picture.planes[noxcodec::kLuma].Row(y)[x] - 16);
      const double cb = picture.planes[noxcodec::kCb].Row(y / 2)[x / 2] - 128;
      const double cr = picture.planes[noxcodec::kCr].Row(y / 2)[x / 2] - 128;
      // ITU-R BT.601
      row.push_back(ToByte(luma + 1.596 * cr));
      row.push_back(ToByte(luma - 0.392 * cb - 0.813 * cr));
      row.push_back(ToByte(luma + 2.017 * cb));
    }
    output.Write(row);
  }
}

}  // namespace zebtool
