// What kinds of devices and boards can do, their picture sizes, and what reaches the display.
#include <array>
#include <numeric>

#include "capture/picture_formats.h"
#include "image/dib_obj.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "tests/capture/library_fixture.h"

using namespace zebx;

namespace {

using zebdev::Function;
using zebdev::MakeVirtualDevice;

class ZebxSupport : public CaptureLibrary {};

TEST_F(ZebxSupport, KnowsHighQualityAndAudioOfEveryBoardType) {
  // The types that answer 1, asked with a bit above their 8, which does not count.
  const auto expect_types = [](const std::vector<DWORD>& expected, auto ask) {
    std::vector<DWORD> types;
    for (DWORD type = 0; type < 256; ++type) {
      if (ask(type | 0x100) == 1) types.push_back(type);
    }
    EXPECT_EQ(types, expected);
  };
  expect_types({0, 1, 2, 3, 4, 7, 10, 11}, zebxIsHQSupport);
  expect_types({1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 134, 136, 138},
               [](DWORD type) { return zebxIsAudioSupport(type, 1); });
  expect_types({1, 6, 7, 8, 10, 11, 134, 136, 138},
               [](DWORD type) { return zebxIsAudioSupport(type, 2); });
}

TEST_F(ZebxSupport, AsksTheRightBitsOfTheFirstBoardOnly) {
  using Answers = std::vector<int>;
  const auto ask = [](BYTE io_ports, BYTE watchdog, BYTE tv) {
    zebdev::VirtualDevice device = MakeVirtualDevice(0x040, 8);
    device.m_capability.m_io_ports = io_ports;
    device.m_capability.m_watchdog = watchdog;
    device.m_capability.m_tv = tv;
    InitializeWith({device});
    EXPECT_EQ(zebxIsIOSupport(1) | zebxIsWatchDog(1) | zebxIsTVSupport(1), 0);
    Answers answers = {zebxIsIOSupport(0), zebxIsWatchDog(0), zebxIsTVSupport(0)};
    zebxCloseZebx();
    return answers;
  };
  EXPECT_EQ(ask(0xC0, 0xBF, 0xEF), (Answers{0, 0, 0}));
  EXPECT_EQ(ask(0x20, 0xFF, 0xFF), (Answers{1, 0x40, 0x10}));
}

TEST_F(ZebxSupport, HandsWordsAndChannelsToTheRightDevice) {
  InitializeWith({MakeVirtualDevice(0x001, 3), MakeVirtualDevice(0x040, 8)});
  EXPECT_EQ(zebxSetTVOut(1, 0xFFFFFFFF, 2), 1);
  EXPECT_EQ(zebxIOCtrl(1, 0xFE, 3, 0xFFFFFFFF), 1);
  EXPECT_EQ(zebxSetTVOut(2, 1, 2) | zebxIOCtrl(2, 1, 2, 3), 0) << "a second board";
  zebdev::FailCall(Function::kSetTVOut, 1);
  EXPECT_EQ(zebxSetTVOut(1, 1, 2), 0);
  ExpectCalls({"noxdevSetTVOut 1 4294967295 2", "noxdevIOCtl 1 254 3 4294967295",
               "noxdevSetTVOut 1 1 2 failed"});

  const auto is_valid = [](tag_ZEBCAMERAID id) { return zebxIsValidCameraID(&id) != 0; };
  EXPECT_TRUE(is_valid({0, 2}));
  EXPECT_FALSE(is_valid({0, 3}));
  EXPECT_TRUE(is_valid({2, 3}));
  EXPECT_FALSE(is_valid({2, 4}));
  EXPECT_TRUE(is_valid({1, 7})) << "the channel of the second board's camera 3";
  ExpectCalls({"noxdevChIsValidID 0 2", "noxdevChIsValidID 0 3", "noxdevChIsValidID 1 7",
               "noxdevChIsValidID 1 8", "noxdevChIsValidID 1 7"});
  zebdev::FailCall(Function::kChIsValidID, 1);
  EXPECT_FALSE(is_valid({0, 2}));
}

TEST_F(ZebxSupport, GivesTheWatermarksPaddedRowsAndSizeToTheDisplay) {
  std::vector<BYTE> dib(40 + 2 * 12);  // two rows of three pixels of 24 bits and their padding
  std::iota(dib.begin() + 40, dib.end(), BYTE{1});
  dib[4] = 3;
  dib[8] = 2;
  dib[14] = 24;
  os::RegisterBitmapResource(1, dib);
  CDibObj picture;
  ASSERT_EQ(picture.LoadBmp(1U), 1);
  EXPECT_EQ(zebxSetWaterMark(&picture), 1);
  const auto watermark = noxdisplay::CurrentWatermark();
  ASSERT_TRUE(watermark.has_value());
  EXPECT_EQ(watermark->m_width, 3U);
  EXPECT_EQ(watermark->m_height, 2U);
  EXPECT_EQ(watermark->m_pixels, std::vector<BYTE>(dib.begin() + 40, dib.end()));
}

TEST_F(ZebxSupport, LetsEveryDeviceDrawAgainOnceTheSurfacesAreRestored) {
  InitializeWith({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x040, 8)});
  EXPECT_EQ(zebxCheckDrawSurface(), 0);
  noxdisplay::LoseSurfaces();
  zebdev::FailCall(Function::kRestore, 1);
  EXPECT_EQ(zebxCheckDrawSurface(), 1);
  EXPECT_EQ(zebxCheckDrawSurface(), 0);
  ExpectCalls({"noxdevRestore 0 failed", "noxdevRestore 1"});
}

using Sizes = std::array<DWORD, 6>;

// Width and height as shown, encoded and captured.
Sizes SizesOf(DWORD frame_size, int expected_answer = 1) {
  Sizes sizes{};
  EXPECT_EQ(zebxGetShowSize(frame_size, sizes.data(), &sizes[1]), expected_answer) << frame_size;
  zebxGetEncodeSize(frame_size, &sizes[2], &sizes[3]);
  zebxGetCaptureSize(frame_size, &sizes[4], &sizes[5]);
  return sizes;
}

TEST(PictureFormats, AnswerWithTheHardwaresSizesAndNothingElse) {
  EXPECT_EQ(SizesOf(0), (Sizes{160, 120, 160, 112, 160, 112}));
  EXPECT_EQ(SizesOf(8), (Sizes{704, 480, 720, 240, 704, 240}));
  EXPECT_EQ(SizesOf(128), (Sizes{176, 144, 176, 144, 176, 144}));
  EXPECT_EQ(SizesOf(136), (Sizes{704, 576, 720, 288, 704, 288}));
  for (const DWORD frame_size : {9U, 127U, 137U, 256U}) EXPECT_EQ(SizesOf(frame_size, 0), Sizes{});
}

}  // namespace
