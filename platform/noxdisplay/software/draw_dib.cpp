// Drawing of single pictures.
#include <algorithm>
#include <span>
#include <vector>

#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/software/display_library.h"
#include "platform/os/graphics/graphics.h"
#include "platform/os/graphics/pixels.h"

using namespace zebx::noxdisplay;

namespace {

constexpr WORD kBitCount = 24;
constexpr std::size_t kPixelBytes = 3;

std::size_t UnpaddedRowBytes(const os::PixelLayout& layout) {
  return static_cast<std::size_t>(layout.m_width) * kPixelBytes;
}

// The rows with the padding that a DIB wants.
std::vector<BYTE> PadRows(const BYTE* picture, const os::PixelLayout& layout) {
  const std::size_t row_bytes = UnpaddedRowBytes(layout);
  std::vector<BYTE> padded(layout.TotalBytes());
  for (std::size_t row = 0; row < static_cast<std::size_t>(layout.m_height); ++row) {
    std::copy_n(picture + row * row_bytes, row_bytes, padded.data() + row * layout.m_pitch_bytes);
  }
  return padded;
}

bool Draw(const BYTE* picture, const CSize* size, HDC dc, const CRect* target) {
  if (picture == nullptr || size == nullptr || target == nullptr) return false;
  os::BitmapInfoHeader header;
  header.m_width = size->cx;
  header.m_height = size->cy;
  header.m_bit_count = kBitCount;
  const auto layout = os::PixelLayout::Of(header);
  if (!layout || layout->m_top_down) return false;

  std::vector<BYTE> padded;
  std::span<const BYTE> rows(picture, layout->TotalBytes());
  if (UnpaddedRowBytes(*layout) != layout->m_pitch_bytes) {
    padded = PadRows(picture, *layout);
    rows = padded;
  }
  os::SetStretchBltMode(dc, os::StretchMode::kHalftone);
  return os::StretchDIBits(dc, target->left, target->top, target->Width(), target->Height(), 0, 0,
                           size->cx, size->cy, rows, header, {}, os::kSrcCopy) != os::kGdiError;
}

}  // namespace

int noxshowDrawDib(const BYTE* picture, const CSize* size, HDC dc, const CRect* target) {
  const auto draw = [=] { return Draw(picture, size, dc, target); };
  return DisplayLibrary::Get().Call(Function::kDrawDib, draw);
}
