// Where windows lie on a recorder's screen.
#pragma once

#include <vector>

#include "platform/framework/geometry.h"

namespace zebtool {

inline constexpr LONG kScreenWidth = 1600;

struct WindowGrid {
  CSize screen;
  std::vector<CRect> windows;  // a little apart
};

// One large window in the corner for the first camera and small ones around it for the others, as
// wide and high in proportion as a television picture.
WindowGrid MakeWindowGrid(std::size_t cameras);

// One window that fills the screen, or up to four of one size: two beside each other, and the
// others below them.
WindowGrid MakePaneGrid(std::size_t panes, CSize screen);

// So high as a television picture of that width.
LONG TelevisionHeight(LONG width);

}  // namespace zebtool
