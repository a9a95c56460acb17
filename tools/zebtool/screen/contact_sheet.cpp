#include "tools/zebtool/screen/contact_sheet.h"

#include <utility>

#include "tools/zebtool/screen/picture_format.h"
#include "tools/zebtool/screen/window_grid.h"

namespace zebtool {
namespace {

constexpr LONG kGap = 4;

CSize SizeOf(const CImage& image) {
  return {static_cast<LONG>(image.GetImageWidth()), static_cast<LONG>(image.GetImageHeight())};
}

// The place counts from the sheet's upper corner; rows go from the bottom up in both.
void CopyPicture(const CImage& picture, CPoint place, CSize sheet, BYTE* pixels) {
  const CSize size = SizeOf(picture);
  for (LONG y = 0; y < size.cy; ++y) {
    const LONG row = sheet.cy - place.y - size.cy + y;
    std::copy_n(picture.GetRawImage() + kImageBytes * PixelAt(size.cx, 0, y),
                kImageBytes * static_cast<std::size_t>(size.cx),
                pixels + kImageBytes * PixelAt(sheet.cx, place.x, row));
  }
}

}  // namespace

std::size_t SheetColumns(std::size_t pictures) {
  constexpr std::size_t kInOneRow = 4;
  if (pictures <= kInOneRow) return std::max<std::size_t>(pictures, 1);
  std::size_t columns = 1;
  while (columns * columns < pictures) ++columns;
  return columns;
}

LONG SheetCellWidth(std::size_t columns) {
  return kScreenWidth / static_cast<LONG>(columns) - kGap;
}

CImage MakeContactSheet(std::span<const CImage> pictures, std::size_t columns) {
  LONG width = 0;
  for (const CImage& picture : pictures) width = std::max(width, SizeOf(picture).cx + kGap);
  std::vector<CPoint> places;
  CSize sheet = {width * static_cast<LONG>(columns), 0};
  for (std::size_t begin = 0; begin < pictures.size(); begin += columns) {
    LONG height = 0;
    for (std::size_t at = begin; at < std::min(begin + columns, pictures.size()); ++at) {
      const auto column = static_cast<LONG>(at - begin);
      places.push_back({column * width + kGap / 2, sheet.cy + kGap / 2});
      height = std::max(height, SizeOf(pictures[at]).cy + kGap);
    }
    sheet.cy += height;
  }
  auto pixels = MakeBackground(sheet);
  for (std::size_t at = 0; at < pictures.size(); ++at) {
    CopyPicture(pictures[at], places[at], sheet, pixels.get());
  }
  CImage image;
  image.CreateImage(pixels.release(), static_cast<DWORD>(sheet.cx), static_cast<DWORD>(sheet.cy));
  return image;
}

void PictureSample::Add(CImage picture) {
  m_kept.push_back(std::move(picture));
  if (m_kept.size() < 2 * m_wanted) return;
  // Every second one goes, and from now on only every second one comes.
  for (std::size_t at = 0; at < m_wanted; ++at) m_kept[at] = m_kept[2 * at];
  m_kept.resize(m_wanted);
  m_stride *= 2;
}

std::vector<CImage> PictureSample::Pictures() const {
  if (m_kept.size() <= m_wanted) return m_kept;
  std::vector<CImage> pictures;
  for (std::size_t at = 0; at < m_wanted; ++at) {
    pictures.push_back(m_kept[at * (m_kept.size() - 1) / std::max<std::size_t>(m_wanted - 1, 1)]);
  }
  return pictures;
}

}  // namespace zebtool
