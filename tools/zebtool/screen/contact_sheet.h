// Many pictures as one.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "image/image.h"
#include "platform/framework/geometry.h"

namespace zebtool {

// How many columns so many pictures of one size are laid out in: one row of up to four, and as many
// columns as rows or a few more.
std::size_t SheetColumns(std::size_t pictures);
// How wide each of them is, with its share of the gaps, when the sheet is as wide as a screen.
LONG SheetCellWidth(std::size_t columns);

// The pictures in rows from the left to the right, a little apart; every row is as high as its
// highest picture, every column as wide as the widest of all.
CImage MakeContactSheet(std::span<const CImage> pictures, std::size_t columns);

// A few pictures out of a row whose length nobody knows beforehand, spread evenly over it.
class PictureSample {
 public:
  explicit PictureSample(std::size_t wanted) : m_wanted(wanted) {}

  // Call for each picture of the row: true when it is to be added.
  bool TakesNext() { return m_seen++ % m_stride == 0; }
  void Add(CImage picture);
  // At most as many as were wanted, the first one and, if the row is longer than that, one near
  // its end among them.
  std::vector<CImage> Pictures() const;

 private:
  std::size_t m_wanted;
  std::size_t m_seen = 0;
  std::size_t m_stride = 1;  // every so many-th picture was kept
  std::vector<CImage> m_kept;
};

}  // namespace zebtool
