// The library's start and end, its devices and the numbering of its boards.
#include <algorithm>

#include "capture/capture_app.h"
#include "capture/capture_board.h"
#include "capture/capture_device.h"
#include "tests/capture/library_fixture.h"

namespace {

using zebdev::Function;

constexpr DWORD kNone = 0xFFFFFFFF;

struct Notification {
  DWORD m_code = 0;
  std::uintptr_t m_user_data = 0;
  std::uintptr_t m_first = 0;
  std::uintptr_t m_second = 0;
  int m_calls = 0;
};

Notification g_last;

DWORD Listen(DWORD code, std::uintptr_t user_data, std::uintptr_t first, std::uintptr_t second) {
  g_last = {code, user_data, first, second, g_last.m_calls + 1};
  return 5;
}

class ZebxState : public CaptureLibrary {};

TEST_F(ZebxState, InitialisesInOrderAndPassesTheStartUpWordOn) {
  Plan({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x002, 8)});
  EXPECT_EQ(zebxIsZebxInit(), 0);
  EXPECT_EQ(zebxIsValidBoardIndex(0), 0);
  EXPECT_EQ(Initialize(), 1);
  EXPECT_EQ(zebxIsZebxInit(), 1);
  const Lines expected = {"noxdevInitialize 7 0", "noxdevGetDeviceNum",   "noxdevCreateDevice 0",
                          "noxdevGetDeviceCap 0", "noxdevCreateDevice 1", "noxdevGetDeviceCap 1"};
  EXPECT_EQ(zebdev::TakeJournal(), expected);
}

TEST_F(ZebxState, KeepsTheFirstCallsArgumentsWhenInitialisedTwice) {
  Plan({MakeVirtualDevice(0x001, 4)});
  int window = 0;
  const auto first_window = reinterpret_cast<HWND>(&window);
  EXPECT_EQ(zebxInitZebx(1, Listen, 11, first_window, "d:\\one"), 1);
  zebdev::TakeJournal();
  EXPECT_EQ(zebxInitZebx(2, nullptr, 22, nullptr, "d:\\two"), 1);
  EXPECT_TRUE(zebdev::TakeJournal().empty());

  const CCaptureApp& app = GetCaptureApp();
  EXPECT_EQ(app.GetHostWindow(), first_window);
  EXPECT_EQ(app.GetDeviceDirectory(), "d:\\one");
  EXPECT_EQ(app.Notify(ZEBX_MSG_FRAME, 3, 4), 5U);
  EXPECT_EQ(g_last.m_code, 0x465U);
  EXPECT_EQ(g_last.m_user_data, 11U);
  EXPECT_EQ(g_last.m_first, 3U);
  EXPECT_EQ(g_last.m_second, 4U);
}

TEST_F(ZebxState, ClosesAndForgetsEverythingButDatabaseAndWatermark) {
  Plan({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x002, 8)});
  int something = 0;
  CCaptureApp& app = GetCaptureApp();
  EXPECT_EQ(zebxInitZebx(1, Listen, 11, reinterpret_cast<HWND>(&something), "d:\\dev"), 1);
  const auto database = reinterpret_cast<CZebDatabase*>(&something);
  app.SetDatabase(database);
  EXPECT_EQ(zebxEnableWaterMark(2), 1);
  EXPECT_EQ(zebxSetWaterMarkTrans(9), 1);
  EXPECT_EQ(zebxOpenBoard(1, 3, 25), 1);
  zebdev::TakeJournal();

  zebxCloseZebx();
  const Lines expected = {"noxdevDestroyDevice 0", "noxdevCloseDevice 1", "noxdevDestroyDevice 1"};
  EXPECT_EQ(zebdev::TakeJournal(), expected);
  EXPECT_EQ(zebxIsZebxInit(), 0);
  EXPECT_EQ(zebxGetBoardNum(), 0U);
  EXPECT_EQ(zebxGetCameraNum(0), 0U);
  EXPECT_EQ(app.GetHostWindow(), nullptr);
  EXPECT_EQ(app.GetDeviceDirectory(), "");
  const int calls = g_last.m_calls;
  EXPECT_EQ(app.Notify(ZEBX_MSG_FACES, 0, 0), kNone);
  EXPECT_EQ(g_last.m_calls, calls);

  EXPECT_EQ(app.GetDatabase(), database);
  DWORD transparency = 0;
  EXPECT_EQ(app.GetWaterMark(&transparency), 2);
  EXPECT_EQ(transparency, 9U);
  app.SetDatabase(nullptr);

  EXPECT_EQ(Initialize(), 1);
  EXPECT_EQ(zebxGetBoardNum(), 3U);
  EXPECT_EQ(zebxIsBoardOpen(1), 0);
}

TEST_F(ZebxState, InitialisesWithoutDevicesAndWithoutADirectory) {
  EXPECT_EQ(zebxInitZebx(0, nullptr, 0, nullptr, nullptr), 1);
  EXPECT_EQ(zebxGetBoardNum(), 0U);
  EXPECT_EQ(zebxGetTotalCamera(), 0U);
  EXPECT_EQ(zebxIsValidBoardIndex(0), 0);
}

TEST_F(ZebxState, NumbersBoardsOverAllDevicesAndLeavesOutTheBrokenOnes) {
  // The fourth creation and the second capability record fail.
  Plan({MakeVirtualDevice(0x040, 8), MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x400, 0xC8),
        MakeVirtualDevice(0x002, 2), MakeVirtualDevice(0x800, 3)});
  zebdev::FailCall(Function::kGetDeviceCap, 2);
  zebdev::FailCall(Function::kCreateDevice, 4);
  EXPECT_EQ(Initialize(), 1);
  const Lines journal = zebdev::TakeJournal();
  EXPECT_EQ(std::count(journal.begin(), journal.end(), "noxdevDestroyDevice 1"), 1);

  const struct {
    BYTE m_type;
    DWORD m_cameras;
    DWORD m_stream;
  } boards[] = {{6, 4, 0}, {0x86, 4, 1}, {10, 4, 0}, {0x8A, 4, 1}, {11, 3, 0}};
  EXPECT_EQ(zebxGetBoardNum(), 5U);
  EXPECT_EQ(zebxGetTotalCamera(), 19U);
  for (WORD board = 0; board < 5; ++board) {
    EXPECT_EQ(zebxIsValidBoardIndex(board), 1);
    EXPECT_EQ(zebxGetBoardType(board), boards[board].m_type) << board;
    EXPECT_EQ(zebxGetCameraNum(board), boards[board].m_cameras) << board;
    EXPECT_EQ(zebxGet8PortStreamIndex(board), boards[board].m_stream) << board;
  }
}

TEST_F(ZebxState, StoresSixteenDevicesAndNoMore) {
  std::vector<zebdev::VirtualDevice> devices(20, MakeVirtualDevice(0x001, 8));
  Plan(devices);
  zebdev::FailCall(Function::kCreateDevice, 3);
  EXPECT_EQ(Initialize(), 1);
  EXPECT_EQ(zebxGetBoardNum(), 32U);
  EXPECT_EQ(zebxGetTotalCamera(), 128U);
  EXPECT_EQ(zebxGetBoardType(31), 0x80);
  EXPECT_EQ(zebxIsValidBoardIndex(32), 0);
  EXPECT_EQ(zebxOpenBoard(31, 3, 1), 1);
  const Lines journal = zebdev::TakeJournal();
  EXPECT_EQ(journal.back(), "noxdevOpenDevice 16 3 d:\\dev\\");
}

TEST_F(ZebxState, KnowsNothingOfBoardsThatNoDeviceHas) {
  InitializeWith({MakeVirtualDevice(0x040, 4)});
  for (const WORD board : {WORD{1}, WORD{0xFFFF}}) {
    const tag_ZEBCAMERAID id = {board, 0};
    DWORD value = 77;
    EXPECT_EQ(zebxGetCameraNum(board), 0U);
    EXPECT_EQ(zebxIsValidBoardIndex(board), 0);
    EXPECT_EQ(zebxIsValidCameraID(&id), 0);
    EXPECT_EQ(zebxIsBoardOpen(board), 0);
    EXPECT_EQ(zebxOpenBoard(board, 3, 1), 0);
    EXPECT_EQ(zebxCloseBoard(board), 0);
    EXPECT_EQ(zebxGetFrameSize(board, &value), 0);
    EXPECT_EQ(zebxGetSpeed(board, &value), 0);
    EXPECT_EQ(value, 77U);
    EXPECT_EQ(zebxSetSpeed(board, 1), 0);
    EXPECT_EQ(zebxGetBoardType(board), 0);
    EXPECT_EQ(zebxIsTVSupport(board), 0);
    EXPECT_EQ(zebxSetTVOut(board, 1, 2), 0);
    EXPECT_EQ(zebxIsWatchDog(board), 0);
    EXPECT_EQ(zebxIsVoice(&id), 0);
    EXPECT_EQ(zebxIsIOSupport(board), 0);
    EXPECT_EQ(zebxIOCtrl(board, 1, 2, 3), 0);
    EXPECT_EQ(zebxGet8PortStreamIndex(board), kNone);
  }
  EXPECT_EQ(zebxIsVoice(nullptr), 0);
  EXPECT_EQ(zebxIsValidCameraID(nullptr), 0);
  EXPECT_EQ(zebxGetFrameSize(0, nullptr), 0);
  EXPECT_EQ(zebxGetSpeed(0, nullptr), 0);
  EXPECT_TRUE(zebdev::TakeJournal().empty());
}

TEST(CaptureApp, LimitsTheLowByteOfTheWatermarksTransparency) {
  CCaptureApp app;
  DWORD transparency = 0;
  EXPECT_EQ(app.GetWaterMark(&transparency), 0);
  EXPECT_EQ(transparency, kNone);
  EXPECT_EQ(app.GetDatabase(), nullptr);
  const DWORD cases[][2] = {{0, 0},      {128, 128},   {129, 128}, {200, 128},
                            {0x150, 80}, {0x1FF, 128}, {0x100, 0}, {kNone, 128}};
  for (const auto& [given, stored] : cases) {
    app.SetWaterMarkTransparency(given);
    app.GetWaterMark(&transparency);
    EXPECT_EQ(transparency, stored) << given;
  }
}

}  // namespace
