// The library's start and end, its devices, and its boards: their numbers, and what they know while
// they are open and closed.
#include <array>

#include "capture/capture_app.h"
#include "tests/capture/library_fixture.h"

using namespace zebx;

namespace {

using zebdev::MakeVirtualDevice;

constexpr DWORD kNone = 0xFFFFFFFF;

std::array<std::uintptr_t, 4> g_notified;

DWORD Listen(DWORD code, std::uintptr_t user_data, std::uintptr_t first, std::uintptr_t second) {
  g_notified = {code, user_data, first, second};
  return 5;
}

class ZebxState : public CaptureLibrary {};

TEST_F(ZebxState, LastsFromTheFirstStartToTheEndWhichKeepsDatabaseAndWatermark) {
  Plan({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x002, 8)});
  int something = 0;
  auto* const database = reinterpret_cast<CZebDatabase*>(&something);
  EXPECT_EQ(zebxInitZebx(7, Listen, 11, nullptr, "d:\\one"), 1);
  EXPECT_EQ(zebxInitZebx(2, nullptr, 22, nullptr, "d:\\two"), 1) << "and changes nothing";
  ExpectCalls({"noxdevInitialize 7 0", "noxdevGetDeviceNum", "noxdevCreateDevice 0",
               "noxdevGetDeviceCap 0", "noxdevCreateDevice 1", "noxdevGetDeviceCap 1"});
  CCaptureApp& app = GetCaptureApp();
  EXPECT_EQ(app.Notify(ZEBX_MSG_FRAME, 3, 4), 5U);
  EXPECT_EQ(g_notified, (std::array<std::uintptr_t, 4>{0x465, 11, 3, 4}));
  EXPECT_EQ(zebxOpenBoard(1, 3, 25), 1);
  ExpectCalls({"noxdevOpenDevice 1 3 d:\\one\\"});
  app.SetDatabase(database);
  EXPECT_EQ(zebxEnableWaterMark(2) & zebxSetWaterMarkTrans(0x150), 1);

  zebxCloseZebx();
  ExpectCalls({"noxdevDestroyDevice 0", "noxdevCloseDevice 1", "noxdevDestroyDevice 1"});
  EXPECT_EQ(zebxIsZebxInit(), 0);
  EXPECT_EQ(zebxGetBoardNum() | zebxGetCameraNum(0), 0U);
  EXPECT_EQ(app.Notify(ZEBX_MSG_FACES, 0, 0), kNone);
  EXPECT_EQ(app.GetDatabase(), database);
  DWORD transparency = 0;
  EXPECT_EQ(app.GetWaterMark(&transparency), 2);
  EXPECT_EQ(transparency, 0x50U) << "the low byte";
  zebxSetWaterMarkTrans(129);
  app.GetWaterMark(&transparency);
  EXPECT_EQ(transparency, 128U);
  app.SetDatabase(nullptr);
}

TEST_F(ZebxState, IsLeftWhenTheDeviceLibraryDoesNotGetReady) {
  Plan({});
  zebdev::FailCall(zebdev::Function::kInitialize, 1);
  zebdev::FailCall(zebdev::Function::kGetDeviceNum, 1);
  EXPECT_EQ(Initialize() | Initialize() | zebxIsZebxInit(), 0);
  ExpectCalls({"noxdevInitialize 7 0 failed", "noxdevInitialize 7 0", "noxdevGetDeviceNum failed",
               "noxdevInvalidate"});
}

TEST_F(ZebxState, NumbersTheBoardsOfSixteenDevicesAndLeavesOutTheBrokenOnes) {
  // The bit of a known type is the number of its boards' type.
  constexpr int kKnownTypes = 12;
  std::vector<zebdev::VirtualDevice> devices;
  for (int bit = 0; bit <= kKnownTypes; ++bit)
    devices.push_back(MakeVirtualDevice(DWORD{1} << bit, 0xC8));
  devices.insert(devices.begin() + 3, 2, MakeVirtualDevice(0x001, 4));
  devices.insert(devices.end(), 5, MakeVirtualDevice(0x400, 0xC3));
  Plan(devices);
  zebdev::FailCall(zebdev::Function::kGetDeviceCap, 4);
  zebdev::FailCall(zebdev::Function::kCreateDevice, 5);
  EXPECT_EQ(Initialize(), 1);

  using Words = std::array<DWORD, 3>;
  const auto board_at = [](WORD index) {
    return Words{zebxGetBoardType(index), zebxGetCameraNum(index), zebxGet8PortStreamIndex(index)};
  };
  WORD board = 0;
  for (int bit = 0; bit <= kKnownTypes; ++bit) {
    const auto type = static_cast<DWORD>(bit % kKnownTypes);
    EXPECT_EQ(board_at(board++), (Words{type, 4, 0}));
    EXPECT_EQ(board_at(board++), (Words{type | 0x80, 4, 1}));
  }
  EXPECT_EQ(board_at(board), (Words{10, 3, 0}));
  EXPECT_EQ(zebxGetBoardNum(), board + 3U);
  EXPECT_EQ(zebxGetTotalCamera(), 13U * 8 + 3 * 3);
  const auto has_voice = [](tag_ZEBCAMERAID id) { return zebxIsVoice(&id) != 0; };
  EXPECT_TRUE(has_voice({3, 3}) && has_voice({7, 1}) && has_voice({10, 2}));
  EXPECT_FALSE(has_voice({0, 0}) || has_voice({7, 2}) || has_voice({10, 3}) || has_voice({11, 0}));
  EXPECT_EQ(zebxOpenBoard(board + 2, 3, 1), 1);
  EXPECT_EQ(zebdev::TakeJournal().back(), "noxdevOpenDevice 17 3 d:\\dev\\");
}

TEST_F(ZebxState, KnowsNothingOfBoardsThatNoDeviceHas) {
  InitializeWith({MakeVirtualDevice(0x040, 4)});
  const tag_ZEBCAMERAID id = {1, 0};
  EXPECT_EQ(zebxIsValidBoardIndex(1) | zebxIsValidCameraID(&id) | zebxIsBoardOpen(1) |
                zebxOpenBoard(1, 3, 1) | zebxCloseBoard(1) | zebxSetSpeed(1, 1) |
                zebxGetBoardType(1) | zebxIsTVSupport(1) | zebxSetTVOut(1, 1, 2) |
                zebxIsIOSupport(1) | zebxIOCtrl(1, 1, 2, 3) | zebxIsVoice(&id) |
                zebxIsVoice(nullptr) | zebxIsValidCameraID(nullptr) | zebxGetFrameSize(0, nullptr) |
                zebxGetSpeed(0, nullptr),
            0);
  EXPECT_EQ(zebxGet8PortStreamIndex(1), kNone);
  ExpectCalls({});
}

class ZebxBoard : public CaptureLibrary {
 protected:
  static void ExpectFrameSizeAndSpeed(WORD board, DWORD frame_size, DWORD speed) {
    DWORD values[2] = {};
    EXPECT_EQ(zebxGetFrameSize(board, &values[0]) & zebxGetSpeed(board, &values[1]), 1);
    EXPECT_EQ(values[0], frame_size);
    EXPECT_EQ(values[1], speed);
  }
};

TEST_F(ZebxBoard, StartsTheDeviceInTheModeOfItsFrameSizeUnlessTheSiblingIsOpen) {
  InitializeWith({MakeVirtualDevice(0x001, 8)});
  for (const DWORD frame_size : {2U, 8U, 136U, 0x10003U}) {
    EXPECT_EQ(zebxOpenBoard(0, frame_size, 25), 0) << frame_size;
  }
  ExpectFrameSizeAndSpeed(0, 0xFF, 0);
  ExpectCalls({});
  const std::pair<DWORD, CString> modes[] = {{3, "3"}, {7, "1"}, {131, "2"}, {135, "0"}};
  for (const auto& [frame_size, mode] : modes) {
    EXPECT_EQ(zebxOpenBoard(1, frame_size, 25), 1);
    ExpectCalls({"noxdevOpenDevice 0 " + mode + " d:\\dev\\"});
    EXPECT_EQ(zebxOpenBoard(0, 2, 12), 1);
    EXPECT_EQ(zebxOpenBoard(1, 9, 1), 1) << "open already: nothing changes";
    EXPECT_EQ(zebxCloseBoard(1), 1);
    EXPECT_EQ(zebxCloseBoard(1), 1) << "a closed one";
    ExpectFrameSizeAndSpeed(0, 2, 12);
    EXPECT_EQ(zebxSetSpeed(0, 5), 1);
    ExpectCalls({});
    EXPECT_EQ(zebxCloseBoard(0), 1);
    ExpectFrameSizeAndSpeed(0, 2, 5);
    ExpectFrameSizeAndSpeed(1, frame_size, 25);
    ExpectCalls({"noxdevCloseDevice 0"});
  }
}

TEST_F(ZebxBoard, AsksSomeTypesAgainOnceTheyRunWhatTheyCanDo) {
  const auto keeps_tv = [](DWORD type, bool is_refused) {
    zebdev::VirtualDevice device = MakeVirtualDevice(type, 8);
    device.m_capability_when_open = MakeVirtualDevice(type, 2).m_capability;
    device.m_capability_when_open->m_tv = 0;
    InitializeWith({device});
    if (is_refused) zebdev::FailCall(zebdev::Function::kGetDeviceCap, 1);
    EXPECT_EQ(zebxOpenBoard(0, 3, 25), 1);
    EXPECT_EQ(zebxGetTotalCamera(), 8U) << "the boards stay as they were created";
    zebxCloseBoard(0);
    const int has_tv = zebxIsTVSupport(0);
    zebxCloseZebx();
    return has_tv != 0;
  };
  EXPECT_TRUE(keeps_tv(0x400, false));
  for (const DWORD type : {0x080U, 0x800U}) {
    EXPECT_FALSE(keeps_tv(type, false));
    EXPECT_TRUE(keeps_tv(type, true)) << "what it told before holds";
  }
}

}  // namespace
