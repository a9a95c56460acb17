// Where the windows of live cameras lie on a recorder's screen.
#pragma once

#include <vector>

#include "platform/framework/geometry.h"

namespace zebtool {

struct WindowGrid {
  CSize screen;
  std::vector<CRect> windows;  // a little apart
};

// One large window in the corner for the first camera and small ones around it for the others, as
// wide and high in proportion as a television picture.
WindowGrid MakeWindowGrid(std::size_t cameras);

}  // namespace zebtool
