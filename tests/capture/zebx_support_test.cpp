// What kinds of devices and boards can do, and what reaches the display.
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

TEST_F(ZebxSupport, TellsSoundAndHighQualityOfLikeBoardTypesApart) {
  EXPECT_EQ(zebxIsAudioSupport(0x106, 7) & zebxIsAudioSupport(6 | 0x80, 7) &
                zebxIsAudioSupport(9, 1) & zebxIsHQSupport(0x10B),
            1);
  EXPECT_EQ(zebxIsAudioSupport(7 | 0x80, 0) | zebxIsAudioSupport(9, 2) | zebxIsHQSupport(7 | 0x80),
            0);
}

TEST_F(ZebxSupport, AsksTheRightBitsOfTheFirstBoardOnly) {
  const auto ask = [](BYTE io_ports, BYTE watchdog, BYTE tv) {
    zebdev::VirtualDevice device = MakeVirtualDevice(0x040, 8);
    device.m_capability.m_io_ports = io_ports;
    device.m_capability.m_watchdog = watchdog;
    device.m_capability.m_tv = tv;
    InitializeWith({device});
    EXPECT_EQ(zebxIsIOSupport(1) | zebxIsWatchDog(1) | zebxIsTVSupport(1), 0);
    const std::array answers = {zebxIsIOSupport(0), zebxIsWatchDog(0), zebxIsTVSupport(0)};
    zebxCloseZebx();
    return answers;
  };
  EXPECT_EQ(ask(0xC0, 0xBF, 0xEF), (std::array{0, 0, 0}));
  EXPECT_EQ(ask(0x20, 0xFF, 0xFF), (std::array{1, 0x40, 0x10}));
}

TEST_F(ZebxSupport, HandsWordsAndChannelsToTheRightDevice) {
  InitializeWith({MakeVirtualDevice(0x001, 3), MakeVirtualDevice(0x040, 8)});
  EXPECT_EQ(zebxSetTVOut(1, 0xFFFFFFFF, 2), 1);
  EXPECT_EQ(zebxIOCtrl(1, 0xFE, 3, 0xFFFFFFFF), 1);
  EXPECT_EQ(zebxSetTVOut(2, 1, 2) | zebxIOCtrl(2, 1, 2, 3), 0) << "a second board";
  ExpectCalls({"noxdevSetTVOut 1 4294967295 2", "noxdevIOCtl 1 254 3 4294967295"});
  zebdev::FailCall(Function::kSetTVOut, 1);
  EXPECT_EQ(zebxSetTVOut(1, 1, 2), 0);

  const auto is_valid = [](tag_ZEBCAMERAID id) { return zebxIsValidCameraID(&id) != 0; };
  EXPECT_TRUE(is_valid({0, 2}) && is_valid({2, 3}) && is_valid({1, 7}));
  EXPECT_FALSE(is_valid({0, 3}) || is_valid({2, 4}));
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
  EXPECT_EQ(watermark->m_width * 10 + watermark->m_height, 32U);
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

TEST(PictureFormats, AreTheHardwaresAndNoneForOtherSizes) {
  DWORD width = 0, height = 0;
  EXPECT_EQ(zebxGetCaptureSize(136, &width, &height), 1);
  EXPECT_EQ(width * 1000 + height, 704288U);
  for (const DWORD other : {9U, 127U, 137U}) EXPECT_EQ(zebxGetShowSize(other, &width, &height), 0);
}

}  // namespace
