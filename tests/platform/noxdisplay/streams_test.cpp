#include "platform/noxdisplay/streams.h"

#include <atomic>
#include <limits>
#include <thread>

#include "tests/platform/noxdisplay/display_fixture.h"

using namespace zebx::noxdisplay;

namespace {

class DisplayStreams : public DisplayTest {
 protected:
  void SetUp() override {
    DisplayTest::SetUp();
    m_stream = MakeStream(4, 2);
    m_window = MakeWindow(4, 2);
  }
  int Copy(NoxshowStream stream) {
    const tag_PICTUREDESC picture = {kPicture24Bits, m_pixel, {}, 1, 1, 3};
    return noxshowGetPicture(stream, &picture);
  }
  // Every function that takes a stream; the answers.
  std::vector<int> CallAll(NoxshowStream stream) {
    tag_SURFACELOCK lock;
    return {noxshowIsSurfaceLost(stream), noxshowRestoreSurface(stream),
            noxshowLock(stream, &lock),   noxshowDisplay(stream, m_window, nullptr),
            noxshowUnlock(stream),        Copy(stream),
            noxshowDestroyStream(stream)};
  }

  NoxshowStream m_stream = nullptr;
  HWND m_window = nullptr;
  BYTE m_pixel[3] = {};
};

TEST_F(DisplayStreams, PresentTheLastWholePictureScaled) {
  ASSERT_EQ(noxshowDisplay(m_stream, m_window, nullptr), 0);
  EXPECT_EQ(PictureOf(m_window), Picture(8, 0x181818)) << "no picture yet";
  ASSERT_TRUE(Write(m_stream, 8, [](std::size_t i) { return 0xFF000010 * DWORD(i); }));
  tag_SURFACELOCK lock = {};
  ASSERT_EQ(noxshowLock(m_stream, &lock), 0);
  EXPECT_EQ(lock.m_pitch, 16U);
  EXPECT_NE(noxshowLock(m_stream, &lock), 0) << "it is locked already";
  std::fill_n(lock.m_pixels, 32, BYTE{0xEE});
  const struct {
    LONG m_width, m_height;
    DWORD m_flags;
    Picture m_picture;
  } windows[] = {
      {4, 2, kShowSmooth, {0x00, 0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70}},
      {2, 1, 0, {0x00, 0x20}},
      {2, 1, kShowSmooth, {0x28, 0x48}},
  };
  for (const auto& [width, height, flags, picture] : windows) {
    tag_DISPLAYINFO info = {};
    info.m_flags = flags;
    os::MoveWindow(m_window, {0, 0, width, height});
    ASSERT_EQ(noxshowDisplay(m_stream, m_window, &info), 0);
    EXPECT_EQ(PictureOf(m_window), picture) << "while the next picture is written";
  }
  ASSERT_EQ(noxshowUnlock(m_stream), 0);
  ASSERT_EQ(noxshowDisplay(m_stream, m_window, nullptr), 0);
  EXPECT_EQ(PictureOf(m_window), Picture(2, 0xEEEEEE));
  os::DestroyWindow(m_window);
  EXPECT_NE(noxshowDisplay(m_stream, m_window, nullptr), 0);
}

TEST_F(DisplayStreams, CopyTheirPictureInto24BitRows) {
  std::vector<BYTE> buffer(26, 0xAA);
  BYTE* const pixels = buffer.data();
  tag_PICTUREDESC wanted = {kPicture24Bits, pixels, {}, 4, 2, -12};
  EXPECT_NE(noxshowGetPicture(m_stream, &wanted), 0) << "nothing was written";
  ASSERT_TRUE(Write(m_stream, 8, [](std::size_t i) { return 0xFF030201 + 0x030303 * DWORD(i); }));
  ASSERT_EQ(noxshowGetPicture(m_stream, &wanted), 0);
  EXPECT_EQ(buffer, (std::vector<BYTE>{13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24,   1,
                                       2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 0xAA, 0xAA}));
  wanted.m_pitch = 12;
  ASSERT_EQ(noxshowGetPicture(m_stream, &wanted), 0);
  EXPECT_EQ(buffer[0], 1);
  EXPECT_EQ(Copy(m_stream), 0);
  EXPECT_EQ(m_pixel[0], 12) << "the mean";

  constexpr LONG kLeast = std::numeric_limits<LONG>::min();
  for (const tag_PICTUREDESC& bad : {tag_PICTUREDESC{0x100, pixels, {}, 2, 2, -6},
                                     {kPicture24Bits, nullptr, {}, 2, 2, -6},
                                     {kPicture24Bits, pixels, {}, 2, 2, -8},
                                     {kPicture24Bits, pixels, {}, 0, 2, 0},
                                     {kPicture24Bits, pixels, {}, 0x2AAAAAAB, 2, kLeast},
                                     {kPicture24Bits, pixels, {}, 0x55555557, 1, 5}}) {
    EXPECT_NE(noxshowGetPicture(m_stream, &bad), 0);
  }
}

TEST_F(DisplayStreams, RefuseHandlesThatAreNoneAndSizesThatAreTooLarge) {
  const std::vector<int> refused(7, 1);
  FailCall(Function::kGetPicture, 1);
  EXPECT_EQ(CallAll(m_stream), (std::vector<int>{0, 0, 0, 0, 0, 1, 0}));
  EXPECT_EQ(CallAll(m_stream), refused);
  NoxshowStream next = MakeStream(4, 4);
  EXPECT_NE(next, m_stream) << "a handle is never given out twice";
  EXPECT_EQ(CallAll(reinterpret_cast<NoxshowStream>(&next)), refused);
  EXPECT_EQ(noxshowDestroyStream(nullptr), 0);

  const DWORD streams = CountStreams();
  RefuseMode(kNoxshowOverlaySurface, true);
  NoxshowStream made = next;
  constexpr DWORD kPlain = kNoxshowPlainSurface, kOverlay = kNoxshowOverlaySurface;
  constexpr std::pair<NoxshowSize, DWORD> kBad[] = {{{0, 4}, kPlain},     {{4, 16385}, kPlain},
                                                    {{~0U, ~0U}, kPlain}, {{4, 4}, 0},
                                                    {{4, 4}, 2},          {{4, 4}, kOverlay}};
  for (const auto& [size, mode] : kBad) {
    EXPECT_NE(noxshowCreateStream(&made, &size, mode, nullptr), 0);
  }
  EXPECT_EQ(made, next);
  EXPECT_EQ(CountStreams(), streams);
}

TEST_F(DisplayStreams, KeepLockedPixelsUntilTheyAreUnlocked) {
  const DWORD streams = CountStreams();
  tag_SURFACELOCK lock = {};
  ASSERT_EQ(noxshowLock(m_stream, &lock), 0);
  LoseSurfaces();
  lock.m_pixels[31] = 1;
  EXPECT_EQ(noxshowDestroyStream(m_stream), 0);
  lock.m_pixels[31] = 2;
  EXPECT_NE(noxshowDestroyStream(m_stream), 0);
  EXPECT_NE(noxshowLock(m_stream, &lock), 0);
  EXPECT_EQ(noxshowUnlock(m_stream), 0);
  EXPECT_EQ(CountStreams(), streams - 1);
}

TEST_F(DisplayStreams, TakeNoPictureWhileTheirSurfaceIsLost) {
  const auto write = [&] { return Write(m_stream, 8, [](std::size_t) { return 0x123456U; }); };
  ASSERT_TRUE(write());
  LoseSurfaces();
  EXPECT_NE(noxshowIsLost(), 0);
  EXPECT_NE(noxshowIsSurfaceLost(m_stream), 0);
  EXPECT_FALSE(write());
  EXPECT_NE(noxshowRestoreSurface(m_stream), 0) << "the display itself comes first";
  EXPECT_EQ(noxshowRestore(), 0);
  EXPECT_NE(noxshowDisplay(m_stream, m_window, nullptr), 0);
  EXPECT_EQ(noxshowRestoreSurface(m_stream), 0);
  EXPECT_EQ(noxshowIsSurfaceLost(m_stream), 0);
  EXPECT_NE(Copy(m_stream), 0) << "the picture is gone";
  EXPECT_EQ(noxshowDisplay(m_stream, m_window, nullptr), 0);
  EXPECT_EQ(PixelOf(m_window, 0, 0), 0x181818U);
  ASSERT_TRUE(write());
  EXPECT_EQ(Copy(m_stream), 0);
}

// Cameras are opened and closed, and windows with them, while others present and copy.
TEST_F(DisplayStreams, CanBePresentedCopiedAndDestroyedByManyThreads) {
  constexpr DWORD kSide = 32;
  constexpr int kRounds = 200;
  std::atomic<NoxshowStream> shared = MakeStream(kSide, kSide);
  std::atomic<HWND> moving = m_window;
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
      noxshowDisplay(shared, round % 2 == 0 ? m_window : moving.load(),
                     round % 3 == 0 ? &info : nullptr);
      noxshowBitmap(moving, kNoxshowAlarmPicture, 4);
      noxshowSetBitmap(Canvas(8, 24, 8).m_bitmap, kNoxshowRecordPicture);
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
  for (int round = 0; round < kRounds; ++round) {
    HWND next = MakeWindow(1 + round % 64, 20);
    os::DestroyWindow(moving.exchange(next) == m_window ? nullptr : next);
    noxshowSetBitmap(Canvas(8, 24, 8).m_bitmap, kNoxshowAlarmPicture);
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
