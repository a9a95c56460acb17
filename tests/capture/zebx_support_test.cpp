// What kinds of devices and boards can do.
#include <algorithm>

#include "capture/zebx.h"
#include "platform/zebdev/zebdev.h"
#include "tests/capture/library_fixture.h"

namespace {

using zebdev::Function;

class ZebxSupport : public CaptureLibrary {};

TEST_F(ZebxSupport, GivesEveryDeviceTypeItsBoardTypeAndItsVoices) {
  // Bits of the cameras that have a voice: four of the first board, four of the second.
  const struct {
    DWORD m_device_type;
    BYTE m_board_type;
    BYTE m_voices;
  } cases[] = {{0x001, 0, 0x00},  {0x002, 1, 0xFF}, {0x004, 2, 0x00},  {0x008, 3, 0x33},
               {0x010, 4, 0x33},  {0x020, 5, 0x07}, {0x040, 6, 0xFF},  {0x080, 7, 0xFF},
               {0x100, 8, 0xFF},  {0x200, 9, 0x07}, {0x400, 10, 0x00}, {0x800, 11, 0x00},
               {0x1000, 0, 0x00}, {0x003, 0, 0x00}, {0, 0, 0x00},      {0x80000000, 0, 0x00}};
  for (const auto& expected : cases) {
    InitializeWith({MakeVirtualDevice(expected.m_device_type, 8)});
    EXPECT_EQ(zebxGetBoardType(0), expected.m_board_type) << expected.m_device_type;
    EXPECT_EQ(zebxGetBoardType(1), expected.m_board_type | 0x80) << expected.m_device_type;
    BYTE voices = 0;
    for (WORD i = 0; i < 8; ++i) {
      const tag_ZEBCAMERAID id = {static_cast<WORD>(i / 4), static_cast<WORD>(i % 4)};
      if (zebxIsVoice(&id)) voices |= static_cast<BYTE>(1 << i);
    }
    EXPECT_EQ(voices, expected.m_voices) << expected.m_device_type;
    zebxCloseZebx();
  }
}

TEST(ZebxSupportTables, KnowHighQualityAndAudioOfEveryBoardType) {
  const std::vector<DWORD> high_quality = {0, 1, 2, 3, 4, 7, 10, 11};
  const std::vector<DWORD> audio = {1, 6, 7, 8, 10, 11, 134, 136, 138};
  const std::vector<DWORD> audio_of_two = {3, 4, 5, 9};
  const auto has = [](const std::vector<DWORD>& types, DWORD type) {
    return std::count(types.begin(), types.end(), type) != 0 ? 1 : 0;
  };
  for (DWORD type = 0; type < 256; ++type) {
    for (const DWORD high_bits : {0U, 0x100U, 0xFFFFFF00U}) {
      EXPECT_EQ(zebxIsHQSupport(type | high_bits), has(high_quality, type)) << type;
      for (DWORD camera = 0; camera < 4; ++camera) {
        const int expected = has(audio, type) || (camera < 2 && has(audio_of_two, type)) ? 1 : 0;
        EXPECT_EQ(zebxIsAudioSupport(type | high_bits, camera), expected) << type << ' ' << camera;
      }
    }
  }
}

TEST_F(ZebxSupport, AsksTheRightBitsAndTheFirstBoardOnly) {
  const struct {
    BYTE m_io_ports;
    BYTE m_watchdog;
    BYTE m_tv;
    int m_has_io;
    int m_watchdog_bit;
    int m_tv_bit;
  } cases[] = {{0xC0, 0xBF, 0xEF, 0, 0, 0},
               {0x01, 0x40, 0x10, 1, 0x40, 0x10},
               {0x20, 0xFF, 0xFF, 1, 0x40, 0x10}};
  for (const auto& expected : cases) {
    zebdev::VirtualDevice device = MakeVirtualDevice(0x040, 8);
    device.m_capability.m_io_ports = expected.m_io_ports;
    device.m_capability.m_watchdog = expected.m_watchdog;
    device.m_capability.m_tv = expected.m_tv;
    InitializeWith({device});
    EXPECT_EQ(zebxIsIOSupport(0), expected.m_has_io);
    EXPECT_EQ(zebxIsWatchDog(0), expected.m_watchdog_bit);
    EXPECT_EQ(zebxIsTVSupport(0), expected.m_tv_bit);
    EXPECT_EQ(zebxIsIOSupport(1), 0);
    EXPECT_EQ(zebxIsWatchDog(1), 0);
    EXPECT_EQ(zebxIsTVSupport(1), 0);
    zebxCloseZebx();
  }
}

TEST_F(ZebxSupport, HandsTVAndIOWordsToTheDeviceOfAFirstBoard) {
  InitializeWith({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x040, 8)});
  EXPECT_EQ(zebxSetTVOut(1, 0xFFFFFFFF, 2), 1);
  EXPECT_EQ(zebxIOCtrl(1, 0xFE, 3, 0xFFFFFFFF), 1);
  EXPECT_EQ(zebxSetTVOut(2, 1, 2), 0);
  EXPECT_EQ(zebxIOCtrl(2, 1, 2, 3), 0);
  zebdev::FailCall(Function::kSetTVOut, 1);
  zebdev::FailCall(Function::kIOCtl, 1);
  EXPECT_EQ(zebxSetTVOut(1, 1, 2), 0);
  EXPECT_EQ(zebxIOCtrl(1, 1, 2, 3), 0);
  const Lines expected = {"noxdevSetTVOut 1 4294967295 2", "noxdevIOCtl 1 254 3 4294967295",
                          "noxdevSetTVOut 1 1 2 failed", "noxdevIOCtl 1 1 2 3 failed"};
  EXPECT_EQ(zebdev::TakeJournal(), expected);
}

TEST_F(ZebxSupport, AsksTheDeviceForTheChannelOfACamera) {
  InitializeWith({MakeVirtualDevice(0x001, 3), MakeVirtualDevice(0x040, 8)});
  const struct {
    tag_ZEBCAMERAID m_id;
    const char* m_call;
    bool m_is_valid;
  } cases[] = {{{0, 2}, "noxdevChIsValidID 0 2", true},
               {{0, 3}, "noxdevChIsValidID 0 3", false},
               {{1, 0}, "noxdevChIsValidID 1 0", true},
               {{2, 3}, "noxdevChIsValidID 1 7", true},
               {{2, 4}, "noxdevChIsValidID 1 8", false},
               // The device answers by channel: the first board's camera 7 is the second's 3.
               {{1, 7}, "noxdevChIsValidID 1 7", true},
               {{2, 0xFFFF}, "noxdevChIsValidID 1 65539", false}};
  for (const auto& expected : cases) {
    EXPECT_EQ(zebxIsValidCameraID(&expected.m_id) != 0, expected.m_is_valid) << expected.m_call;
    EXPECT_EQ(zebdev::TakeJournal(), Lines{expected.m_call});
  }
  zebdev::FailCall(Function::kChIsValidID, 1);
  EXPECT_EQ(zebxIsValidCameraID(&cases[0].m_id), 0);
}

}  // namespace
