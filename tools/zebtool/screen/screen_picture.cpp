#include "tools/zebtool/screen/screen_picture.h"

#include <algorithm>
#include <memory>

#include "platform/os/windows/windows.h"
#include "tools/zebtool/screen/picture_format.h"

namespace zebtool {
namespace {

constexpr std::size_t kWindowBytes = 4;  // of a pixel

// Rows of the picture go from the bottom up.
void CopyWindow(HWND window, CSize screen, BYTE* pixels) {
  CRect place;
  if (os::GetWindowRect(window, &place) == 0) return;
  os::WithWindowPicture(window, [&](const os::WindowPicture& picture) {
    const LONG width = std::min(picture.m_size.cx, screen.cx - place.left);
    const LONG height = std::min(picture.m_size.cy, screen.cy - place.top);
    const BYTE* from = picture.m_pixels.data();
    for (LONG y = 0; y < height; ++y) {
      const LONG row = screen.cy - 1 - (place.top + y);
      BYTE* to = pixels + kImageBytes * PixelAt(screen.cx, place.left, row);
      const BYTE* pixel = from + kWindowBytes * PixelAt(picture.m_size.cx, 0, y);
      for (LONG x = 0; x < width; ++x, pixel += kWindowBytes, to += kImageBytes) {
        std::copy_n(pixel, kImageBytes, to);
      }
    }
  });
}

}  // namespace

CImage PictureOfScreen(CSize screen, std::span<const HWND> windows) {
  auto pixels = MakeBackground(screen);
  for (HWND window : windows) CopyWindow(window, screen, pixels.get());
  CImage picture;
  picture.CreateImage(pixels.release(), static_cast<DWORD>(screen.cx),
                      static_cast<DWORD>(screen.cy));
  return picture;
}

}  // namespace zebtool
