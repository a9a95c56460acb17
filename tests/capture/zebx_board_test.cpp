// Opening and closing boards, and what they know while open and closed.
#include "tests/capture/library_fixture.h"

using namespace zebx;

namespace {

using zebdev::MakeVirtualDevice;

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
