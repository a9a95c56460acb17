#include "tools/zebtool/screen/window_grid.h"

#include <algorithm>

namespace zebtool {
namespace {

constexpr LONG kGap = 2;

struct Form {
  LONG columns;
  LONG large;  // columns and rows of the large window
};

// One alone, one above three, one among five, and then as few columns as will do.
Form FormOf(LONG cameras) {
  if (cameras <= 1) return {1, 1};
  if (cameras <= 4) return {4, 3};
  LONG columns = 3;
  while (columns * columns < cameras + 3) ++columns;
  return {columns, 2};
}

}  // namespace

WindowGrid MakeWindowGrid(std::size_t cameras) {
  const auto count = static_cast<LONG>(cameras);
  const Form form = FormOf(count);
  const LONG width = kScreenWidth / form.columns;
  const LONG height = TelevisionHeight(width);
  const auto window = [&](LONG column, LONG row, LONG cells) {
    return CRect{column * width + kGap, row * height + kGap, (column + cells) * width - kGap,
                 (row + cells) * height - kGap};
  };
  const LONG cells = count - 1 + form.large * form.large;
  const LONG rows = std::max(form.large, (cells + form.columns - 1) / form.columns);
  WindowGrid grid{{form.columns * width, rows * height}, {}};
  if (cameras == 0) return grid;
  grid.windows.push_back(window(0, 0, form.large));
  for (LONG row = 0; row < rows; ++row) {
    for (LONG column = row < form.large ? form.large : 0; column < form.columns; ++column) {
      if (grid.windows.size() < cameras) grid.windows.push_back(window(column, row, 1));
    }
  }
  return grid;
}

WindowGrid MakePaneGrid(std::size_t panes, CSize screen) {
  if (panes <= 1) return {screen, {{0, 0, screen.cx, screen.cy}}};
  const LONG width = (screen.cx - kGap) / 2;
  const LONG height = TelevisionHeight(width);
  const auto rows = static_cast<LONG>((panes + 1) / 2);
  WindowGrid grid{{screen.cx, rows * (height + kGap) - kGap}, {}};
  for (std::size_t pane = 0; pane < panes; ++pane) {
    const LONG left = static_cast<LONG>(pane % 2) * (width + kGap);
    const LONG top = static_cast<LONG>(pane / 2) * (height + kGap);
    grid.windows.push_back({left, top, left + width, top + height});
  }
  return grid;
}

LONG TelevisionHeight(LONG width) {
  return width * 3 / 4;
}

}  // namespace zebtool
