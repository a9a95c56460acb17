// Nothing of the display is left behind when memory runs out.
#include "tests/platform/noxdisplay/display_fixture.h"
#include "tests/support/counted_memory.h"

using namespace zebx::noxdisplay;

namespace {

using DisplayMemory = DisplayTest;

TEST_F(DisplayMemory, ThatRunsOutFailsTheCallAndNothingElse) {
  const Canvas mark(4);
  HWND window = MakeWindow(3, 3);  // a third of the size, which takes tables
  const NoxshowSize size = {9, 9};
  BYTE pixel[3];
  const tag_PICTUREDESC picture = {kPicture24Bits, pixel, {}, 1, 1, 3};
  tag_SURFACELOCK lock;
  const DWORD streams = CountStreams();
  NoxshowStream stream = nullptr;
  const std::vector<std::function<int()>> calls = {
      [&] { return noxshowCreateStream(&stream, &size, kNoxshowPlainSurface, nullptr); },
      [&] { return noxshowLock(stream, &lock); },
      [&] { return noxshowUnlock(stream); },
      [&] { return noxshowDisplay(stream, window, nullptr); },
      [&] { return noxshowGetPicture(stream, &picture); },
      [&] { return noxshowSetBitmap(mark.m_bitmap, kNoxshowAlarmPicture); },
      [&] { return noxshowBitmap(window, kNoxshowAlarmPicture, 0); },
      [&] { return noxshowDestroyStream(stream); },
  };
  StartJournal();
  for (const auto& call : calls) {
    int left = 0;
    for (int answer = 1; answer != 0; ++left) {
      ASSERT_LT(left, 20);
      counted_memory::calls_left = left;
      answer = call();
      counted_memory::calls_left = -1;
      EXPECT_EQ(CountStreams(), stream == nullptr ? streams : streams + (&call != &calls.back()));
    }
  }
  // A window whose picture there was no memory for, and then no area either.
  os::MoveWindow(window, {0, 0, 50, 50});
  counted_memory::calls_left = 0;
  EXPECT_NE(noxshowBitmap(window, kNoxshowAlarmPicture, 0), 0);
  counted_memory::calls_left = -1;
  os::MoveWindow(window, {});
  EXPECT_NE(noxshowBitmap(window, kNoxshowAlarmPicture, 0), 0);
}

}  // namespace
