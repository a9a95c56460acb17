#include "tools/zebtool/play/shown_pictures.h"

#include <filesystem>
#include <iomanip>
#include <sstream>

#include "tools/zebtool/console/console.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/media/png_file.h"
#include "tools/zebtool/screen/screen_picture.h"

namespace zebtool {
namespace {

// "003-012.png", so that a directory's order is the recording's.
std::string FileNameOf(const FramePosition& position) {
  std::ostringstream name;
  name << std::setfill('0') << std::setw(3) << position.block << '-' << std::setw(3)
       << position.index << ".png";
  return name.str();
}

}  // namespace

ShownPictures::ShownPictures(const PlayOptions& options)
    : m_options(options),
      m_columns(SheetColumns(PicturesOf(options))),
      m_sample(PicturesOf(options)) {
  if (options.sheet) CheckOutput(*options.sheet, ExistingFiles());
  if (!options.frames_directory) return;
  MakeDirectories(*options.frames_directory);
  if (!options.replaces && !std::filesystem::is_empty(ToHostPath(*options.frames_directory))) {
    throw JobError("'" + *options.frames_directory +
                   "' is not empty; --force writes the pictures beside what is there");
  }
}

Existing ShownPictures::ExistingFiles() const {
  return Existing{m_options.replaces};
}

WindowGrid ShownPictures::PlacePanes(std::size_t panes, CSize picture) const {
  if (m_options.sheet) {
    const LONG width = SheetCellWidth(m_columns);
    return MakePaneGrid(panes, {width, TelevisionHeight(width)});
  }
  return MakePaneGrid(panes, {panes > 1 ? 2 * picture.cx : picture.cx, picture.cy});
}

void ShownPictures::Take(const Shown& shown, CSize screen, std::span<const HWND> windows) {
  if (m_options.sheet && m_sample.TakesNext()) m_sample.Add(PictureOfScreen(screen, windows));
  if (!m_options.frames_directory) return;
  const std::string path = *m_options.frames_directory + '/' + FileNameOf(shown.position);
  // A step back shows a picture again.
  const bool is_new = m_saved.insert(shown.position).second;
  WritePng(path, is_new ? ExistingFiles() : Existing::kReplace, PictureOfScreen(screen, windows));
}

void ShownPictures::Finish() {
  if (!m_options.sheet) return;
  const std::vector<CImage> pictures = m_sample.Pictures();
  m_on_sheet = pictures.size();
  if (pictures.empty()) return;
  const std::size_t columns = std::min(m_columns, SheetColumns(pictures.size()));
  WritePng(*m_options.sheet, ExistingFiles(), MakeContactSheet(pictures, columns));
}

}  // namespace zebtool
