#include "platform/noxcodec/software/picture_output.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/noxcodec/software/narrowed.h"

namespace zebx::noxcodec {
namespace {

// BT.601: what luma of 16..235 and chroma of 16..240 around 128 give of full range, in 1/256. The
// whole parts are added apart, so that no product leaves 16 bits and the compiler converts as many
// pixels at once as it can.
constexpr int kLumaFraction = 42;  // of 1 + 42/256
constexpr int kRedOfCr = 153;      // of 1 + 153/256
constexpr int kGreenOfCb = -100;
constexpr int kGreenOfCr = 48;  // of -1 + 48/256
constexpr int kBlueOfCb = 4;    // of 2 + 4/256
constexpr int kRounding = 128;
constexpr int kBlack = 16;
constexpr int kNoColour = 128;
constexpr int kUnusedByte = 255;

constexpr int kStripPixels = 512;  // even: a chroma pixel is never parted

int Limited(std::int16_t value) {
  return std::clamp<int>(value, 0, 255);
}

// Two bytes in the order in which they lie in memory.
std::uint16_t Pair(int first, int second) {
  constexpr bool kLittle = std::endian::native == std::endian::little;
  return static_cast<std::uint16_t>(kLittle ? first | second << 8 : first << 8 | second);
}

using Strip = std::array<BYTE, kStripPixels>;

void DoublePixels(const BYTE* chroma, int width, Strip& strip) {
  for (int x = 0; x < (width + 1) / 2; ++x) {
    const auto at = 2 * static_cast<std::size_t>(x);
    strip[at] = strip[at + 1] = chroma[x];
  }
}

// Converts `width` pixels of a row, at most kStripPixels, from an even place on.
void WriteStrip(const BYTE* luma, const BYTE* cb, const BYTE* cr, int width, BYTE* out) {
  Strip blueness, redness;
  DoublePixels(cb, width, blueness);
  DoublePixels(cr, width, redness);
  std::array<std::uint16_t, std::size_t{2} * kStripPixels> pairs;
  const auto pixels = static_cast<std::size_t>(width);
  for (std::size_t x = 0; x < pixels; ++x) {
    const auto grey = Narrowed(luma[x] - kBlack);
    const auto u = Narrowed(blueness[x] - kNoColour);
    const auto v = Narrowed(redness[x] - kNoColour);
    const auto rest = Narrowed(kLumaFraction * grey + kRounding);
    const auto blue = Narrowed(grey + 2 * u + (Narrowed(rest + kBlueOfCb * u) >> 8));
    const auto green = Narrowed(grey - v + (Narrowed(rest + kGreenOfCb * u + kGreenOfCr * v) >> 8));
    const auto red = Narrowed(grey + v + (Narrowed(rest + kRedOfCr * v) >> 8));
    pairs[2 * x] = Pair(Limited(blue), Limited(green));
    pairs[2 * x + 1] = Pair(Limited(red), kUnusedByte);
  }
  std::memcpy(out, pairs.data(), pixels * kBgrxPixelBytes);
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
    BYTE* const out = first_row + y * pitch_bytes;
    for (int x = 0; x < picture.Width(); x += kStripPixels) {
      const int width = std::min(kStripPixels, picture.Width() - x);
      WriteStrip(luma + x, cb + x / 2, cr + x / 2, width,
                 out + std::ptrdiff_t{x} * kBgrxPixelBytes);
    }
  }
}

}  // namespace zebx::noxcodec
