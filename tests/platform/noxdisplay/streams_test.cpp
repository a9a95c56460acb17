#include "platform/noxdisplay/streams.h"

#include <atomic>
#include <limits>
#include <optional>
#include <thread>

#include "tests/platform/noxdisplay/display_fixture.h"

using namespace zebx::noxdisplay;

namespace {

using DisplayStreams = DisplayTest;

TEST_F(DisplayStreams, PresentTheLastWholePictureScaled) {
  NoxshowStream stream = MakeStream(4, 2);
  HWND window = MakeWindow(4, 2);
  ASSERT_EQ(noxshowDisplay(stream, window, nullptr), 0);
  EXPECT_EQ(PictureOf(window), Picture(8, 0x181818)) << "no picture yet";

  ASSERT_TRUE(Write(stream, 8, [](std::size_t i) { return 0xFF000010 * DWORD(i); }));
  const Picture written = {0x00, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70};
  tag_SURFACELOCK lock = {};
  ASSERT_EQ(noxshowLock(stream, &lock), 0);
  EXPECT_EQ(lock.m_pitch, 16U);
  EXPECT_NE(noxshowLock(stream, &lock), 0) << "it is locked already";
  std::fill_n(lock.m_pixels, 32, BYTE{0xEE});
  const struct {
    LONG m_width, m_height;
    DWORD m_flags;
    Picture m_picture;
  } windows[] = {
      {4, 2, kShowSmooth, written},
      {8,
       2,
       0,
       {0, 0, 0x10, 0x10, 0x20, 0x20, 0x30, 0x30, 0x40, 0x40, 0x50, 0x50, 0x60, 0x60, 0x70, 0x70}},
      {2, 1, kShowSmooth, {0x28, 0x48}},
      {2, 1, 0, {0x00, 0x20}},
      {1, 1, kShowSmooth, {0x38}},
  };
  for (const auto& [width, height, flags, picture] : windows) {
    tag_DISPLAYINFO info = {};
    info.m_flags = flags;
    os::MoveWindow(window, {0, 0, width, height});
    ASSERT_EQ(noxshowDisplay(stream, window, &info), 0);
    EXPECT_EQ(PictureOf(window), picture) << "while the next picture is written";
  }
  ASSERT_EQ(noxshowUnlock(stream), 0);
  EXPECT_NE(noxshowUnlock(stream), 0);
  ASSERT_EQ(noxshowDisplay(stream, window, nullptr), 0);
  EXPECT_EQ(PictureOf(window), Picture{0xEEEEEE});
  os::DestroyWindow(window);
  EXPECT_NE(noxshowDisplay(stream, window, nullptr), 0);
}

TEST_F(DisplayStreams, CopyTheirPictureInto24BitRows) {
  NoxshowStream stream = MakeStream(2, 2);
  std::vector<BYTE> buffer(16, 0xAA);
  tag_PICTUREDESC wanted = {kPicture24Bits, buffer.data(), {}, 2, 2, -6};
  EXPECT_NE(noxshowGetPicture(stream, &wanted), 0) << "nothing was written";
  ASSERT_TRUE(Write(stream, 4, [](std::size_t i) { return 0xFF030201 + 0x040404 * DWORD(i); }));
  ASSERT_EQ(noxshowGetPicture(stream, &wanted), 0);
  EXPECT_EQ(buffer,
            (std::vector<BYTE>{9, 10, 11, 13, 14, 15, 1, 2, 3, 5, 6, 7, 0xAA, 0xAA, 0xAA, 0xAA}));
  wanted.m_pitch = 6;
  ASSERT_EQ(noxshowGetPicture(stream, &wanted), 0);
  EXPECT_EQ(buffer[0], 1);
  wanted = {kPicture24Bits, buffer.data(), {}, 1, 1, -3};
  ASSERT_EQ(noxshowGetPicture(stream, &wanted), 0);
  EXPECT_EQ((std::vector<BYTE>(buffer.begin(), buffer.begin() + 4)),
            (std::vector<BYTE>{7, 8, 9, 5}));

  constexpr LONG kLeast = std::numeric_limits<LONG>::min();
  for (const tag_PICTUREDESC& bad :
       {tag_PICTUREDESC{0x100, buffer.data(), {}, 2, 2, -6},
        tag_PICTUREDESC{kPicture24Bits, nullptr, {}, 2, 2, -6},
        tag_PICTUREDESC{kPicture24Bits, buffer.data(), {}, 2, 2, -8},
        tag_PICTUREDESC{kPicture24Bits, buffer.data(), {}, 0, 2, 0},
        tag_PICTUREDESC{kPicture24Bits, buffer.data(), {}, 2, 0xFFFFFFFF, 6},
        tag_PICTUREDESC{kPicture24Bits, buffer.data(), {}, 0x2AAAAAAB, 2, kLeast},
        tag_PICTUREDESC{kPicture24Bits, buffer.data(), {}, 0x55555557, 1, 5}}) {
    EXPECT_NE(noxshowGetPicture(stream, &bad), 0);
  }
  EXPECT_NE(noxshowGetPicture(stream, nullptr), 0);
}

// Every function that takes a stream; the answers.
std::vector<int> CallAll(NoxshowStream stream, HWND window) {
  tag_SURFACELOCK lock;
  BYTE pixel[3];
  const tag_PICTUREDESC picture = {kPicture24Bits, pixel, {}, 1, 1, 3};
  return {noxshowIsSurfaceLost(stream), noxshowRestoreSurface(stream),
          noxshowLock(stream, &lock),   noxshowDisplay(stream, window, nullptr),
          noxshowUnlock(stream),        noxshowGetPicture(stream, &picture),
          noxshowDestroyStream(stream)};
}

TEST_F(DisplayStreams, RefuseHandlesThatAreNoneAndSizesThatAreTooLarge) {
  HWND window = MakeWindow(4, 4);
  const std::vector<int> good(7, 0), refused(7, 1);
  NoxshowStream stream = MakeStream(4, 4);
  EXPECT_EQ(CallAll(stream, window), good);
  EXPECT_EQ(CallAll(stream, window), refused);
  NoxshowStream next = MakeStream(4, 4);
  EXPECT_NE(next, stream) << "a handle is never given out twice";
  EXPECT_EQ(CallAll(reinterpret_cast<NoxshowStream>(&next), window), refused);
  EXPECT_EQ(noxshowDestroyStream(nullptr), 0);

  const DWORD streams = CountStreams();
  NoxshowStream made = next;
  for (const NoxshowSize size : {NoxshowSize{0, 4}, {4, 16385}, {0xFFFFFFFF, 0xFFFFFFFF}}) {
    EXPECT_NE(noxshowCreateStream(&made, &size, kNoxshowOverlaySurface, nullptr), 0);
  }
  const NoxshowSize size = {4, 4};
  for (const DWORD mode : {0U, 2U, 4U}) {
    EXPECT_NE(noxshowCreateStream(&made, &size, mode, nullptr), 0);
  }
  RefuseMode(kNoxshowOverlaySurface, true);
  EXPECT_NE(noxshowCreateStream(&made, &size, kNoxshowOverlaySurface, nullptr), 0);
  EXPECT_EQ(made, next);
  EXPECT_EQ(CountStreams(), streams);
  EXPECT_EQ(noxshowCreateStream(&made, &size, kNoxshowPlainSurface, nullptr), 0);
  RefuseMode(kNoxshowPlainSurface, true);
  EXPECT_NE(noxshowCreateStream(&made, &size, kNoxshowPlainSurface, nullptr), 0);
  EXPECT_EQ(noxshowDestroyStream(made), 0);
}

TEST_F(DisplayStreams, KeepLockedPixelsUntilTheyAreUnlocked) {
  const DWORD streams = CountStreams();
  NoxshowStream stream = MakeStream(4, 4);
  tag_SURFACELOCK lock = {};
  ASSERT_EQ(noxshowLock(stream, &lock), 0);
  LoseSurfaces();
  lock.m_pixels[63] = 1;
  EXPECT_EQ(noxshowDestroyStream(stream), 0);
  lock.m_pixels[63] = 2;
  EXPECT_NE(noxshowDestroyStream(stream), 0);
  EXPECT_NE(noxshowLock(stream, &lock), 0);
  EXPECT_EQ(noxshowUnlock(stream), 0);
  EXPECT_NE(noxshowUnlock(stream), 0);
  EXPECT_EQ(CountStreams(), streams);
}

TEST_F(DisplayStreams, TakeNoPictureWhileTheirSurfaceIsLost) {
  NoxshowStream stream = MakeStream(1, 1);
  HWND window = MakeWindow(1, 1);
  BYTE pixel[3];
  const tag_PICTUREDESC picture = {kPicture24Bits, pixel, {}, 1, 1, 3};
  const auto write = [&] { return Write(stream, 1, [](std::size_t) { return 0x123456U; }); };
  ASSERT_TRUE(write());
  LoseSurfaces();
  EXPECT_NE(noxshowIsSurfaceLost(stream), 0);
  EXPECT_FALSE(write());
  EXPECT_NE(noxshowRestoreSurface(stream), 0) << "the display itself comes first";
  EXPECT_EQ(noxshowRestore(), 0);
  EXPECT_NE(noxshowDisplay(stream, window, nullptr), 0);
  EXPECT_EQ(noxshowRestoreSurface(stream), 0);
  EXPECT_EQ(noxshowIsSurfaceLost(stream), 0);
  EXPECT_NE(noxshowGetPicture(stream, &picture), 0) << "the picture is gone";
  EXPECT_EQ(noxshowDisplay(stream, window, nullptr), 0);
  EXPECT_EQ(PictureOf(window), Picture{0x181818});
  ASSERT_TRUE(write());
  EXPECT_EQ(noxshowDisplay(stream, window, nullptr), 0);
  EXPECT_EQ(PictureOf(window), Picture{0x123456});
}

TEST_F(DisplayStreams, FailAsTheyAreToldAndKeepAJournal) {
  NoxshowStream stream = MakeStream(2, 2);
  HWND window = MakeWindow(2, 2);
  const std::string number = std::to_string(reinterpret_cast<std::uintptr_t>(stream));
  const std::string window_number = std::to_string(reinterpret_cast<std::uintptr_t>(window));
  StartJournal();
  FailCall(Function::kDisplay, 2);
  FailCall(Function::kIsLost, 1);
  tag_DISPLAYINFO info = {};
  info.m_flags = 7;
  EXPECT_EQ(noxshowDisplay(stream, window, &info), 0);
  EXPECT_EQ(noxshowDisplay(stream, window, nullptr), 1);
  EXPECT_NE(noxshowIsLost(), 0);
  EXPECT_EQ(noxshowIsLost(), 0);
  EXPECT_EQ(noxshowBitmap(window, kNoxshowIdlePicture, 4), 0);
  EXPECT_EQ(TakeJournal(),
            (std::vector<CString>{"noxshowDisplay " + number + " " + window_number + " 7",
                                  "noxshowDisplay " + number + " " + window_number + " - failed",
                                  "noxshowIsLost failed", "noxshowIsLost",
                                  "noxshowBitmap " + window_number + " 4096 4"}));
}

// Cameras are opened and closed, and windows with them, while others present and copy.
TEST_F(DisplayStreams, CanBePresentedCopiedAndDestroyedByManyThreads) {
  constexpr DWORD kSide = 32;
  constexpr int kRounds = 200;
  HWND window = MakeWindow(20, 20);
  std::atomic<NoxshowStream> shared = MakeStream(kSide, kSide);
  std::atomic<HWND> moving = window;
  std::atomic<bool> is_over = false;
  std::atomic<int> copies = 0, torn = 0;
  const auto write = [&] {
    for (DWORD grey = 0; !is_over; grey = (grey + 1) % 256) {
      Write(shared, kSide * kSide, [grey](std::size_t) { return grey * 0x010101; });
    }
  };
  const auto show = [&] {
    tag_DISPLAYINFO info = {};
    info.m_flags = 0xFFFFFFFF & ~DWORD{kShowVideoLost};
    for (int round = 0; !is_over; ++round) {
      noxshowDisplay(shared, round % 2 == 0 ? window : moving.load(),
                     round % 3 == 0 ? &info : nullptr);
      noxshowBitmap(moving, kNoxshowAlarmPicture, 4);
    }
  };
  const auto copy = [&] {
    std::vector<BYTE> pixels(kSide * kSide * 3);
    const tag_PICTUREDESC whole = {kPicture24Bits, pixels.data(), {}, kSide, kSide, 3 * kSide};
    while (!is_over) {
      if (noxshowGetPicture(shared, &whole) != 0) continue;
      ++copies;
      if (std::ranges::count(pixels, pixels[0]) != std::ssize(pixels)) ++torn;
    }
  };
  std::vector<std::thread> threads;
  for (const auto& work : std::vector<std::function<void()>>{write, write, show, show, copy}) {
    threads.emplace_back(work);
  }
  const Canvas mark(8, 24, 8);
  for (int round = 0; round < kRounds; ++round) {
    HWND next = MakeWindow(1 + round % 64, 20);
    os::DestroyWindow(moving.exchange(next) == window ? nullptr : next);
    noxshowSetBitmap(mark.m_bitmap, kNoxshowAlarmPicture);
    if (round % 8 == 0) LoseSurfaces();
    noxshowRestore();
    noxshowRestoreSurface(shared);
    if (round % 4 == 0) noxshowDestroyStream(shared.exchange(MakeStream(kSide, kSide)));
    while (round + 1 == kRounds && copies == 0) std::this_thread::yield();
  }
  is_over = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(torn, 0);
}

}  // namespace
