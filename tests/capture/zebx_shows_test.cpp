#include <list>

#include "capture/show_param.h"
#include "platform/os/debug_output.h"
#include "platform/os/windows/windows.h"
#include "platform/zebdev/software/virtual_channels.h"
#include "tests/capture/library_fixture.h"

using namespace zebx;

namespace {

class ShowTypes : public CaptureLibrary {
 protected:
  ShowTypes() {
    os::SetDebugSink([this](std::string_view text) { m_debug += text; });
  }
  ~ShowTypes() override {
    os::SetDebugSink({});
    for (const auto& show : m_shows) os::DestroyWindow(show.GetWnd());
  }

  static void OpenBoards(std::vector<zebdev::VirtualDevice> devices) {
    Plan(std::move(devices));
    zebdev::SetDrive(zebdev::Drive::kStepped);
    ASSERT_EQ(Initialize(), 1);
    for (DWORD board = 0; board < zebxGetBoardNum(); ++board) {
      zebxOpenBoard(static_cast<WORD>(board), 3, 25);
    }
  }

  // Opens a camera in a window of that size, which it answers.
  HWND OpenCamera(tag_ZEBCAMERAID id, LONG width, LONG height) {
    HWND window = os::CreateWindow(nullptr, "live", {20, 20, 20 + width, 20 + height},
                                   [](HWND, UINT, WPARAM, LPARAM) { return LRESULT{0}; });
    m_shows.emplace_back().Create(window, 0);
    EXPECT_EQ(zebxOpenCamera(&id, 0, nullptr, nullptr, nullptr, &m_shows.back()), 1);
    return window;
  }

  // What refreshing gave to which channels: "device channel show-type".
  static Lines Refresh(tag_ZEBCAMERAID focus) {
    zebdev::TakeJournal();
    EXPECT_EQ(zebxRefreshShow(&focus), 1);
    Lines calls = zebdev::TakeJournal();
    for (CString& line : calls) line.erase(0, CString("noxdevChChangeShow ").size());
    return calls;
  }

  std::list<CShowParam> m_shows;
  CString m_debug;
};

TEST_F(ShowTypes, AreChosenByTheWindowsOfOpenCameras) {
  OpenBoards({zebdev::MakeVirtualDevice(0x040, 2), zebdev::MakeVirtualDevice(0x040, 1),
              zebdev::MakeVirtualDevice(0x040, 1)});
  HWND large = OpenCamera({1, 0}, 640, 480);
  OpenCamera({0, 1}, 200, 150);
  OpenCamera({2, 0}, 640, 480);
  EXPECT_EQ(Refresh({2, 0}), (Lines{"0 0 2", "0 1 2", "1 0 1", "2 0 1"}));
  EXPECT_EQ(std::exchange(m_debug, ""), "BoardIndex 0 = 2\nBoardIndex 1 = 1\nBoardIndex 2 = 1\n");
  os::DestroyWindow(large);
  EXPECT_EQ(Refresh({2, 0}), (Lines{"0 0 2", "0 1 2", "1 0 2", "2 0 1"}));
  zebxCloseBoard(0);
  EXPECT_EQ(Refresh({2, 0}), (Lines{"1 0 2", "2 0 1"}));
  EXPECT_TRUE(m_debug.ends_with("BoardIndex 0 = 2\nBoardIndex 1 = 2\nBoardIndex 2 = 1\n"))
      << m_debug;
}

TEST_F(ShowTypes, AreWhatEachCameraOfTwoBoardsWants) {
  OpenBoards({zebdev::MakeVirtualDevice(0x080, 8)});
  OpenCamera({0, 0}, 640, 480);
  OpenCamera({1, 1}, 320, 240);
  OpenCamera({1, 3}, 200, 150);
  EXPECT_EQ(Refresh({1, 3}),
            (Lines{"0 0 0", "0 1 2", "0 2 2", "0 3 2", "0 4 2", "0 5 1", "0 6 2", "0 7 0"}));
  EXPECT_EQ(Refresh({0, 4}).back(), "0 7 2") << "no focus";
  EXPECT_EQ(m_debug, "") << "no board is picked";
  const tag_ZEBCAMERAID closed = {1, 2};
  EXPECT_EQ(zebxSetShowType(&closed, 77), 1) << "whatever the device says";
  ExpectCalls({"noxdevChChangeShow 0 6 77 failed"});
}

TEST_F(ShowTypes, AreLeftAloneWithoutABoardOfATypeThatHasThem) {
  const tag_ZEBCAMERAID focus = {};
  EXPECT_EQ(zebxRefreshShow(nullptr), 0);
  EXPECT_EQ(zebxRefreshShow(&focus), 1) << "there is no board";
  OpenBoards({zebdev::MakeVirtualDevice(0x400, 1), zebdev::MakeVirtualDevice(0x001, 1)});
  EXPECT_EQ(zebxRefreshShow(&focus), 0) << "the last board decides";
  zebxCloseZebx();
  OpenBoards({zebdev::MakeVirtualDevice(0x001, 1), zebdev::MakeVirtualDevice(0x400, 1)});
  EXPECT_EQ(Refresh(focus), (Lines{"0 0 0", "1 0 0"}));
}

}  // namespace
