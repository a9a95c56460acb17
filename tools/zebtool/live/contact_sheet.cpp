#include "tools/zebtool/live/contact_sheet.h"

#include <algorithm>
#include <memory>

#include "image/image.h"
#include "platform/os/windows/windows.h"
#include "tools/zebtool/media/png_file.h"

namespace zebtool {
namespace {

constexpr BYTE kBackground = 0x28;
constexpr std::size_t kImageBytes = 3;   // of a pixel
constexpr std::size_t kWindowBytes = 4;  // of a pixel

// The index of a pixel in rows of `width`.
std::size_t PixelAt(LONG width, LONG x, LONG y) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(y) +
         static_cast<std::size_t>(x);
}

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

void SaveContactSheet(const std::string& path, Existing existing, CSize screen,
                      std::span<const HWND> windows) {
  const std::size_t bytes =
      kImageBytes * static_cast<std::size_t>(screen.cx) * static_cast<std::size_t>(screen.cy);
  auto pixels = std::make_unique<BYTE[]>(bytes);
  std::fill_n(pixels.get(), bytes, kBackground);
  for (HWND window : windows) CopyWindow(window, screen, pixels.get());
  CImage sheet;
  sheet.CreateImage(pixels.release(), static_cast<DWORD>(screen.cx), static_cast<DWORD>(screen.cy));
  WritePng(path, existing, sheet);
}

}  // namespace zebtool
