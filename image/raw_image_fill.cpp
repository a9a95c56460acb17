// Filling a snapshot from a host's pixels, at their size or twice that.
#include <cstddef>
#include <exception>
#include <limits>
#include <memory>

#include "image/image.h"
#include "image/snapshot_format.h"

using namespace zebx;

namespace {

constexpr std::size_t kPixelBytes = kSnapshotPixelBytes;

// The host's rows, in the order in which they are copied.
struct SourceRows {
  const BYTE* m_first;
  std::ptrdiff_t m_step_bytes;  // from one row to the next
  std::size_t m_width;
  std::size_t m_height;
  std::size_t m_pixel_bytes;

  const BYTE* Pixel(std::size_t x, std::size_t y) const {
    return m_first + m_step_bytes * static_cast<std::ptrdiff_t>(y) + x * m_pixel_bytes;
  }
};

void CopyRows(const SourceRows& source, BYTE* out) {
  for (std::size_t y = 0; y < source.m_height; ++y) {
    for (std::size_t x = 0; x < source.m_width; ++x) {
      const BYTE* const pixel = source.Pixel(x, y);
      for (std::size_t c = 0; c < kPixelBytes; ++c) *out++ = pixel[c];
    }
  }
}

BYTE Mean(int sum, int shift) {
  return static_cast<BYTE>(sum >> shift);
}

// The last pixel of a row has no right neighbour: above it is doubled. Below, each byte of the mean
// is written twice in a row instead of each pixel: on purpose, as every zoomed snapshot has it.
void ZoomLastPixel(const BYTE* p, const BYTE* r, BYTE* upper, BYTE* lower) {
  for (std::size_t c = 0; c < kPixelBytes; ++c) {
    upper[c] = upper[kPixelBytes + c] = p[c];
    lower[2 * c] = lower[2 * c + 1] = Mean(p[c] + r[c], 1);
  }
}

// Each source row makes two rows out of itself and the next one, so that the last makes none.
void ZoomRows(const SourceRows& source, BYTE* out) {
  if (source.m_width == 0) return;
  const std::size_t out_row_bytes = 2 * source.m_width * kPixelBytes;
  for (std::size_t y = 0; y + 1 < source.m_height; ++y) {
    BYTE* upper = out + 2 * y * out_row_bytes;
    BYTE* lower = upper + out_row_bytes;
    for (std::size_t x = 0; x + 1 < source.m_width; ++x) {
      const BYTE* const p = source.Pixel(x, y);
      const BYTE* const q = source.Pixel(x + 1, y);
      const BYTE* const r = source.Pixel(x, y + 1);
      const BYTE* const s = source.Pixel(x + 1, y + 1);
      for (std::size_t c = 0; c < kPixelBytes; ++c) {
        upper[c] = p[c];
        upper[kPixelBytes + c] = Mean(p[c] + q[c], 1);
        lower[c] = Mean(p[c] + r[c], 1);
        lower[kPixelBytes + c] = Mean(p[c] + q[c] + r[c] + s[c], 2);
      }
      upper += 2 * kPixelBytes;
      lower += 2 * kPixelBytes;
    }
    const std::size_t last = source.m_width - 1;
    ZoomLastPixel(source.Pixel(last, y), source.Pixel(last, y + 1), upper, lower);
  }
}

}  // namespace

int CImage::FillRawImage(const BYTE* source, DWORD width, DWORD height, int pitch,
                         DWORD bytes_per_pixel, int zoom) {
  if (source == nullptr || (bytes_per_pixel != 3 && bytes_per_pixel != 4)) return 0;
  const DWORD scale = zoom != 0 ? 2 : 1;
  m_width = width * scale;
  m_height = height * scale;
  // The host's pixels may be those of the picture held, which lives until they are copied.
  const std::shared_ptr<BYTE[]> held = m_raw_image;
  ReplaceRawImage(nullptr, 0);
  constexpr ULONGLONG kMaxPixels = std::numeric_limits<DWORD>::max() / kPixelBytes;
  if (ULONGLONG{width} * height > kMaxPixels / (scale * scale)) return 0;

  SourceRows rows = {source, pitch, width, height, bytes_per_pixel};
  if (pitch < 0 && height > 0) {
    rows.m_first += (static_cast<std::ptrdiff_t>(height) - 1) * -std::ptrdiff_t{pitch};
  }
  const std::size_t bytes = std::size_t{m_width} * m_height * kPixelBytes;
  try {
    ReplaceRawImage(std::make_shared<BYTE[]>(bytes), bytes);
  } catch (const std::exception&) {
    return 0;
  }
  if (zoom != 0) {
    ZoomRows(rows, m_raw_image.get());
  } else {
    CopyRows(rows, m_raw_image.get());
  }
  return 1;
}
