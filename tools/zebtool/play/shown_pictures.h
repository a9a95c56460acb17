// What was on the screen, as files.
#pragma once

#include <set>
#include <span>

#include "tools/zebtool/files/output_file.h"
#include "tools/zebtool/play/pane.h"
#include "tools/zebtool/screen/contact_sheet.h"
#include "tools/zebtool/screen/window_grid.h"

namespace zebtool {

class ShownPictures {
 public:
  // Looks whether the files can be written, and makes the directory. Throws JobError.
  explicit ShownPictures(const PlayOptions& options);

  // Where the panes lie: `picture` is the size of one that plays in its own size.
  WindowGrid PlacePanes(std::size_t panes, CSize picture) const;
  // The screen has changed; `shown` is what it shows. Throws JobError.
  void Take(const Shown& shown, CSize screen, std::span<const HWND> windows);
  // Writes the sheet. Throws JobError.
  void Finish();

  // How many are on the sheet or in the directory.
  std::size_t Count() const { return m_saved.size() + m_on_sheet; }

 private:
  Existing ExistingFiles() const;

  const PlayOptions& m_options;
  std::size_t m_columns;
  PictureSample m_sample;
  std::size_t m_on_sheet = 0;
  std::set<FramePosition> m_saved;
};

}  // namespace zebtool
