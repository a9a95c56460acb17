#include "platform/zebdev/software/picture_pixels.h"

#include <cstdint>

#include "platform/noxcodec/software/picture_output.h"

namespace zebx::zebdev {
namespace {

constexpr std::int64_t kBgrPixelBytes = 3;

// Leaves out the fourth byte of each pixel.
void PackRow(const BYTE* bgrx, int width, BYTE* bgr) {
  for (int x = 0; x < width; ++x) {
    bgr[0] = bgrx[0];
    bgr[1] = bgrx[1];
    bgr[2] = bgrx[2];
    bgr += kBgrPixelBytes;
    bgrx += noxcodec::kBgrxPixelBytes;
  }
}

// One row of a picture, as a picture of which colour rows are shared by two.
noxcodec::PictureView RowOf(const noxcodec::PictureView& picture, int y) {
  noxcodec::PictureView row = picture;
  for (int index = 0; index < noxcodec::kPlaneCount; ++index) {
    noxcodec::PlaneView& plane = row.planes[static_cast<std::size_t>(index)];
    plane.pixels = plane.Row(index == noxcodec::kLuma ? y : y / 2);
    plane.height = 1;
  }
  return row;
}

}  // namespace

noxcodec::PictureView PicturePixels::Fitted(const noxcodec::PictureView& picture, int width,
                                            int height) {
  if (picture.Width() == width && picture.Height() == height) return picture;
  if (m_scaled.Width() != width || m_scaled.Height() != height) {
    m_scaled = noxcodec::Picture(width, height);
  }
  m_scaler.Scale(picture, m_scaled);
  return m_scaled.View();
}

int PicturePixels::WriteBgr(const noxcodec::PictureView& picture, int width, int height,
                            LONG row_step_bytes, std::span<BYTE> pixels) {
  if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide) return 0;
  const bool bottom_up = row_step_bytes < 0;
  const std::int64_t step = bottom_up ? -std::int64_t{row_step_bytes} : row_step_bytes;
  if (step < kBgrPixelBytes * width || static_cast<std::uint64_t>(step * height) > pixels.size())
    return 0;
  const noxcodec::PictureView fitted = Fitted(picture, width, height);
  m_row.resize(static_cast<std::size_t>(width) * noxcodec::kBgrxPixelBytes);
  for (int y = 0; y < height; ++y) {
    noxcodec::WriteBgrx(RowOf(fitted, y), m_row.data(), 0);
    PackRow(m_row.data(), width, pixels.data() + (bottom_up ? height - 1 - y : y) * step);
  }
  return 1;
}

void PicturePixels::WriteBgrx(const noxcodec::PictureView& picture, int width, int height,
                              BYTE* first_row, std::ptrdiff_t pitch_bytes) {
  noxcodec::WriteBgrx(Fitted(picture, width, height), first_row, pitch_bytes);
}

}  // namespace zebx::zebdev
