#include "platform/noxcodec/software/picture_output.h"

#include <algorithm>
#include <cstring>

namespace zebx::noxcodec {
namespace {

// BT.601 in 1/256: what luma of 16..235 and chroma of 16..240 around 128 give of full range.
constexpr int kLumaGain = 298;
constexpr int kRedOfCr = 409;
constexpr int kGreenOfCb = -100;
constexpr int kGreenOfCr = -208;
constexpr int kBlueOfCb = 516;
constexpr int kBlack = 16;
constexpr int kNoColour = 128;
constexpr BYTE kUnusedByte = 255;

BYTE ToByte(int value) {
  return static_cast<BYTE>(std::clamp((value + 128) >> 8, 0, 255));
}

}  // namespace

void WriteI420(const PictureView& picture, BYTE* destination, int pitch_bytes) {
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    const PlaneView& view = picture.planes[static_cast<std::size_t>(plane)];
    const int row_pitch = plane == kLuma ? pitch_bytes : (pitch_bytes + 1) / 2;
    for (int y = 0; y < view.height; ++y) {
      std::memcpy(destination, view.Row(y), static_cast<std::size_t>(view.width));
      destination += row_pitch;
    }
  }
}

void WriteBgrx(const PictureView& picture, BYTE* first_row, std::ptrdiff_t pitch_bytes) {
  for (int y = 0; y < picture.Height(); ++y) {
    const BYTE* const luma = picture.planes[kLuma].Row(y);
    const BYTE* const cb = picture.planes[kCb].Row(y / 2);
    const BYTE* const cr = picture.planes[kCr].Row(y / 2);
    BYTE* out = first_row + y * pitch_bytes;
    for (int x = 0; x < picture.Width(); ++x, out += 4) {
      const int grey = kLumaGain * (luma[x] - kBlack);
      const int blueness = cb[x / 2] - kNoColour;
      const int redness = cr[x / 2] - kNoColour;
      out[0] = ToByte(grey + kBlueOfCb * blueness);
      out[1] = ToByte(grey + kGreenOfCb * blueness + kGreenOfCr * redness);
      out[2] = ToByte(grey + kRedOfCr * redness);
      out[3] = kUnusedByte;
    }
  }
}

}  // namespace zebx::noxcodec
