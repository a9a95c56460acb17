// Pictures of the software codec: 8-bit planar 4:2:0, one luma plane and two chroma planes of half
// its size (rounded up) in each direction.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx::noxcodec {

enum PlaneIndex : int { kLuma = 0, kCb = 1, kCr = 2, kPlaneCount = 3 };

// A borrowed plane: `height` rows of `width` pixels, `stride` bytes from row to row.
struct PlaneView {
  const BYTE* pixels = nullptr;
  int width = 0;
  int height = 0;
  int stride = 0;

  const BYTE* Row(int y) const { return pixels + static_cast<std::ptrdiff_t>(y) * stride; }
};

// A borrowed plane that may be written.
struct MutablePlaneView {
  BYTE* pixels = nullptr;
  int width = 0;
  int height = 0;
  int stride = 0;

  BYTE* Row(int y) const { return pixels + static_cast<std::ptrdiff_t>(y) * stride; }
  // As a span turns into one of const:
  // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions)
  operator PlaneView() const { return {pixels, width, height, stride}; }
};

// A borrowed picture. Valid as long as the memory behind its planes.
struct PictureView {
  std::array<PlaneView, kPlaneCount> planes;

  int Width() const { return planes[kLuma].width; }
  int Height() const { return planes[kLuma].height; }
  // The top left `width` * `height` pixels of this picture.
  ZEBX_API PictureView Cropped(int width, int height) const;
};

// A picture that owns its pixels: grey (128) until written. Copyable.
class ZEBX_API Picture {
 public:
  Picture() = default;
  // `width` and `height` are positive. `border` more pixels lie around the luma plane on every
  // side, half as many around the chroma planes; they belong to no view, see ExtendBorder.
  Picture(int width, int height, int border = 0);

  int Width() const { return m_width; }
  int Height() const { return m_height; }

  MutablePlaneView Plane(int plane);
  PlaneView Plane(int plane) const;
  PictureView View() const;

  // Copies the outermost pixels of each plane into its border.
  void ExtendBorder();

 private:
  struct Layout {
    int width, height, border, stride;
    std::size_t offset;
  };
  Layout PlaneLayout(int plane) const;

  int m_width = 0;
  int m_height = 0;
  int m_border = 0;
  std::vector<BYTE> m_bytes;
};

}  // namespace zebx::noxcodec
