// What pictures do when memory runs out, and how much of it drawing takes.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "image/dib_obj.h"
#include "platform/noxdisplay/noxdisplay.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "tests/support/canvas.h"
#include "tests/support/counted_memory.h"

namespace {

TEST(Memory, ThatRunsOutMakesPicturesFailAndLeavesNothingBehind) {
  const auto header = HeaderOf(8, 2, 8).Format();
  std::vector<BYTE> packed(header.size() + std::size_t{256} * 4 + std::size_t{8} * 2, 1);
  std::ranges::copy(header, packed.begin());
  os::RegisterBitmapResource(1, packed);
  const Canvas canvas(5, 24, 5);
  const CRect place = {0, 0, 5, 5};
  const CSize size = {3, 3};
  CDibObj dib;
  const std::function<bool()> operations[] = {
      [&] { return os::DeleteObject(dib.CreateBitmap()) == 1; },
      [&] {
        return dib.Display(canvas.m_dc, place, CRect{0, 0, 8, 2}, os::kSrcCopy) == 1;
      },
      [&] { return noxshowDrawDib(packed.data(), &size, canvas.m_dc, &place) == 0; },
      [&] { return dib.ConvertFormat(8, 2, 24) == 1; }};
  for (const auto& operation : operations) {
    ASSERT_EQ(dib.LoadBmp(1U), 1);
    bool is_done = false;
    int call = 0;
    for (; !is_done && call < 100; ++call) {
      const std::size_t before = counted_memory::live_bytes;
      counted_memory::calls_left = call;
      is_done = operation();
      counted_memory::calls_left = -1;
      EXPECT_TRUE(is_done || counted_memory::live_bytes == before) << call;
      EXPECT_TRUE(is_done || dib.GetBitCount() == 8) << call;
    }
    EXPECT_TRUE(is_done && call > 1) << call;
  }
}

TEST(Memory, IsTakenByDrawingWhateverTheSizes) {
  constexpr int kWidth = 4000000;
  const Canvas small(1);
  const Canvas wide(kWidth, 1);
  const std::size_t before = counted_memory::live_bytes;
  counted_memory::peak_bytes = before;
  for (const os::StretchMode mode : {os::StretchMode::kBlackOnWhite, os::StretchMode::kHalftone}) {
    os::SetStretchBltMode(small.m_dc, mode);
    os::StretchBlt(wide.m_dc, 0, 0, kWidth, 1, small.m_dc, 0, 0, 1, 1, os::kSrcCopy);
    os::StretchBlt(small.m_dc, 0, 0, 1, 1, wide.m_dc, 0, 0, kWidth, 1, os::kSrcCopy);
  }
  EXPECT_LT(counted_memory::peak_bytes - before, 1000000U);
}

}  // namespace
