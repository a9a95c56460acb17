#include "platform/noxcodec/software/picture.h"

#include <algorithm>
#include <cstring>

namespace zebx::noxcodec {

PictureView PictureView::Cropped(int width, int height) const {
  PictureView cropped = *this;
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    PlaneView& view = cropped.planes[static_cast<std::size_t>(plane)];
    view.width = plane == kLuma ? width : (width + 1) / 2;
    view.height = plane == kLuma ? height : (height + 1) / 2;
  }
  return cropped;
}

Picture::Picture(int width, int height, int border)
    : m_width(width), m_height(height), m_border(border) {
  constexpr BYTE kGrey = 128;
  const Layout last = PlaneLayout(kCr);
  const auto rows = static_cast<std::size_t>(last.height + 2 * last.border);
  m_bytes.assign(last.offset + rows * static_cast<std::size_t>(last.stride), kGrey);
}

Picture::Layout Picture::PlaneLayout(int plane) const {
  const auto bytes = [](const Layout& layout) {
    return static_cast<std::size_t>(layout.stride) *
           static_cast<std::size_t>(layout.height + 2 * layout.border);
  };
  Layout luma{m_width, m_height, m_border, m_width + 2 * m_border, 0};
  if (plane == kLuma) return luma;
  Layout chroma{(m_width + 1) / 2, (m_height + 1) / 2, m_border / 2, 0, 0};
  chroma.stride = chroma.width + 2 * chroma.border;
  chroma.offset = bytes(luma) + (plane == kCr ? bytes(chroma) : 0);
  return chroma;
}

MutablePlaneView Picture::Plane(int plane) {
  const Layout layout = PlaneLayout(plane);
  BYTE* const first = m_bytes.data() + layout.offset +
                      static_cast<std::ptrdiff_t>(layout.border) * (layout.stride + 1);
  return {first, layout.width, layout.height, layout.stride};
}

PlaneView Picture::Plane(int plane) const {
  const Layout layout = PlaneLayout(plane);
  const BYTE* const first = m_bytes.data() + layout.offset +
                            static_cast<std::ptrdiff_t>(layout.border) * (layout.stride + 1);
  return {first, layout.width, layout.height, layout.stride};
}

PictureView Picture::View() const {
  return {{Plane(kLuma), Plane(kCb), Plane(kCr)}};
}

void Picture::ExtendBorder() {
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    const int border = PlaneLayout(plane).border;
    const MutablePlaneView view = Plane(plane);
    for (int y = 0; y < view.height; ++y) {
      BYTE* const row = view.Row(y);
      std::fill_n(row - border, border, row[0]);
      std::fill_n(row + view.width, border, row[view.width - 1]);
    }
    const auto row_bytes = static_cast<std::size_t>(view.width + 2 * border);
    for (int y = 1; y <= border; ++y) {
      std::memcpy(view.Row(-y) - border, view.Row(0) - border, row_bytes);
      std::memcpy(view.Row(view.height - 1 + y) - border, view.Row(view.height - 1) - border,
                  row_bytes);
    }
  }
}

}  // namespace zebx::noxcodec
