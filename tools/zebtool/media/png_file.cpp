#include "tools/zebtool/media/png_file.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "tools/zebtool/console/console.h"
#include "tools/zebtool/files/host_paths.h"

namespace zebtool {
namespace {

using namespace zebx;

constexpr int kPixelBytes = 3;

BYTE ToByte(double value) {
  return static_cast<BYTE>(std::lround(std::clamp(value, 0.0, 255.0)));
}

// `pitch` is the distance from one row to the next below it; a negative one means that the first
// row of `pixels` is the lowest.
void Write(const std::string& path, Existing existing, const BYTE* pixels, DWORD width,
           DWORD height, int pitch, png_uint_32 format) {
  OutputFile output(path, existing);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = format;
  if (png_image_write_to_file(&image, output.TemporaryPath().c_str(), 0, pixels, pitch, nullptr) ==
      0) {
    throw JobError("cannot write '" + path + "': " + image.message);
  }
  output.Finish();
}

}  // namespace

void WritePng(const std::string& path, Existing existing, const noxcodec::PictureView& picture) {
  std::vector<BYTE> pixels;
  for (int y = 0; y < picture.Height(); ++y) {
    const int chroma_y = y / 2;
    for (int x = 0; x < picture.Width(); ++x) {
      const int chroma_x = x / 2;
      const double luma = 1.164 * (picture.planes[noxcodec::kLuma].Row(y)[x] - 16);
      const double cb = picture.planes[noxcodec::kCb].Row(chroma_y)[chroma_x] - 128;
      const double cr = picture.planes[noxcodec::kCr].Row(chroma_y)[chroma_x] - 128;
      // ITU-R BT.601
      pixels.push_back(ToByte(luma + 1.596 * cr));
      pixels.push_back(ToByte(luma - 0.392 * cb - 0.813 * cr));
      pixels.push_back(ToByte(luma + 2.017 * cb));
    }
  }
  Write(path, existing, pixels.data(), static_cast<DWORD>(picture.Width()),
        static_cast<DWORD>(picture.Height()), picture.Width() * kPixelBytes, PNG_FORMAT_RGB);
}

void WritePng(const std::string& path, Existing existing, const CImage& image) {
  Write(path, existing, image.GetRawImage(), image.GetImageWidth(), image.GetImageHeight(),
        -static_cast<int>(image.GetImageWidth()) * kPixelBytes, PNG_FORMAT_BGR);
}

CImage ReadPng(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, ToHostPath(path).c_str()) != 0) {
    image.format = PNG_FORMAT_BGR;
    auto pixels = std::make_unique<BYTE[]>(PNG_IMAGE_SIZE(image));
    const int pitch = -static_cast<int>(image.width) * kPixelBytes;
    if (png_image_finish_read(&image, nullptr, pixels.get(), pitch, nullptr) != 0) {
      CImage picture;
      picture.CreateImage(pixels.release(), image.width, image.height);
      return picture;
    }
  }
  throw JobError("cannot read '" + path + "': " + image.message);
}

}  // namespace zebtool
