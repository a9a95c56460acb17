// Opening and closing boards, and what they know while open and closed.
#include <gtest/gtest.h>

#include "capture/capture_app.h"
#include "capture/capture_board.h"
#include "capture/capture_camera.h"
#include "capture/capture_device.h"
#include "platform/zebdev/zebdev.h"
#include "tests/capture/library_fixture.h"

namespace {

using zebdev::Function;

class ZebxBoard : public CaptureLibrary {};

TEST_F(ZebxBoard, StartsTheDeviceInTheModeOfTheFrameSize) {
  const struct {
    DWORD m_frame_size;
    const char* m_mode;
  } cases[] = {{3, "3"}, {7, "1"}, {131, "2"}, {135, "0"}};
  InitializeWith({MakeVirtualDevice(0x001, 4)});
  for (const auto& expected : cases) {
    EXPECT_EQ(zebxOpenBoard(0, expected.m_frame_size, 25), 1);
    EXPECT_EQ(zebxIsBoardOpen(0), 1);
    EXPECT_EQ(zebxCloseBoard(0), 1);
    EXPECT_EQ(zebxIsBoardOpen(0), 0);
    const Lines calls = {CString("noxdevOpenDevice 0 ") + expected.m_mode + " d:\\dev\\",
                         "noxdevCloseDevice 0"};
    EXPECT_EQ(zebdev::TakeJournal(), calls);
  }
}

TEST_F(ZebxBoard, RefusesEveryOtherFrameSizeOnADeviceThatStandsStill) {
  InitializeWith({MakeVirtualDevice(0x001, 8)});
  for (const DWORD frame_size : {0U, 2U, 4U, 6U, 8U, 128U, 130U, 136U, 0xFFU, 0x10003U}) {
    EXPECT_EQ(zebxOpenBoard(0, frame_size, 25), 0) << frame_size;
    EXPECT_EQ(zebxIsBoardOpen(0), 0);
  }
  EXPECT_TRUE(zebdev::TakeJournal().empty());
}

TEST_F(ZebxBoard, TakesAnyFrameSizeBesideAnOpenSibling) {
  InitializeWith({MakeVirtualDevice(0x001, 8)});
  EXPECT_EQ(zebxOpenBoard(1, 2, 25), 0);
  EXPECT_EQ(zebxOpenBoard(0, 3, 25), 1);
  zebdev::TakeJournal();
  EXPECT_EQ(zebxOpenBoard(1, 2, 12), 1);
  EXPECT_EQ(zebxCloseBoard(0), 1);
  EXPECT_TRUE(zebdev::TakeJournal().empty());

  EXPECT_EQ(zebxIsBoardOpen(1), 1);
  EXPECT_EQ(zebxOpenBoard(0, 0xDEAD, 25), 1);
  EXPECT_EQ(zebxCloseBoard(0), 1);
  EXPECT_EQ(zebxCloseBoard(0), 1);
  EXPECT_TRUE(zebdev::TakeJournal().empty());
  EXPECT_EQ(zebxCloseBoard(1), 1);
  EXPECT_EQ(zebdev::TakeJournal(), Lines{"noxdevCloseDevice 0"});
  EXPECT_EQ(zebxCloseBoard(1), 1);
  EXPECT_TRUE(zebdev::TakeJournal().empty());
}

TEST_F(ZebxBoard, RemembersFrameSizeAndSpeedOfTheLastOpening) {
  InitializeWith({MakeVirtualDevice(0x001, 4)});
  const auto expect = [](DWORD frame_size, DWORD speed) {
    DWORD value = 0;
    EXPECT_EQ(zebxGetFrameSize(0, &value), 1);
    EXPECT_EQ(value, frame_size);
    EXPECT_EQ(zebxGetSpeed(0, &value), 1);
    EXPECT_EQ(value, speed);
  };
  expect(0xFF, 0);
  EXPECT_EQ(zebxSetSpeed(0, 5), 1);
  expect(0xFF, 5);
  EXPECT_EQ(zebxOpenBoard(0, 131, 25), 1);
  expect(131, 25);
  // Open already: 1, but nothing changes.
  EXPECT_EQ(zebxOpenBoard(0, 3, 1), 1);
  expect(131, 25);
  EXPECT_EQ(zebxSetSpeed(0, 12), 1);
  EXPECT_EQ(zebxSetSpeed(0, 12), 1);
  EXPECT_EQ(zebxCloseBoard(0), 1);
  expect(131, 12);
}

TEST_F(ZebxBoard, ReadsTheCapabilityAgainOnlyOfTypesThatKnowItLate) {
  for (const DWORD type : {0x001U, 0x040U, 0x080U, 0x100U, 0x400U, 0x800U}) {
    zebdev::VirtualDevice device = MakeVirtualDevice(type, 8);
    device.m_capability_when_open = device.m_capability;
    device.m_capability_when_open->m_tv = 0;
    device.m_capability_when_open->m_channels = 2;
    InitializeWith({device});
    const bool is_late = type == 0x080 || type == 0x800;
    EXPECT_EQ(zebxOpenBoard(0, 3, 25), 1);
    Lines calls = {"noxdevOpenDevice 0 3 d:\\dev\\"};
    if (is_late) calls.emplace_back("noxdevGetDeviceCap 0");
    EXPECT_EQ(zebdev::TakeJournal(), calls) << type;
    EXPECT_EQ(zebxIsTVSupport(0) == 0, is_late) << type;
    // The boards stay as they were created.
    EXPECT_EQ(zebxGetBoardNum(), 2U);
    EXPECT_EQ(zebxGetCameraNum(1), 4U);
    // What the device told while open holds on.
    zebxCloseBoard(0);
    EXPECT_EQ(zebxIsTVSupport(0) == 0, is_late) << type;
    zebxCloseZebx();
  }
}

TEST_F(ZebxBoard, KeepsTheOldCapabilityWhenReadingItAgainFails) {
  InitializeWith({MakeVirtualDevice(0x080, 4)});
  zebdev::FailCall(Function::kGetDeviceCap, 1);
  EXPECT_EQ(zebxOpenBoard(0, 3, 25), 1);
  EXPECT_EQ(zebxIsBoardOpen(0), 1);
  EXPECT_NE(zebxIsTVSupport(0), 0);
}

TEST_F(ZebxBoard, CreatesItsCamerasOnTheirChannelsAndDestroysThem) {
  InitializeWith({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x040, 8)});
  CCaptureDevice* device = GetCaptureApp().FindDevice(2);
  CCaptureBoard* board = GetCaptureApp().FindBoard(2);
  ASSERT_NE(board, nullptr);
  EXPECT_EQ(board->FindCamera(CameraIdWord({2, 0})), nullptr);
  EXPECT_EQ(zebxOpenBoard(2, 3, 25), 1);
  for (WORD camera = 0; camera < 4; ++camera) {
    const CCaptureCamera* found = board->FindCamera(CameraIdWord({2, camera}));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->GetIdWord(), 2U | DWORD{camera} << 16);
    EXPECT_EQ(found->GetDeviceChannel(), 4U + camera);
    EXPECT_EQ(found->GetDeviceHandle(), device->GetHandle());
    EXPECT_EQ(found->GetBoard(), board);
  }
  EXPECT_EQ(board->FindCamera(CameraIdWord({2, 4})), nullptr);
  EXPECT_EQ(board->FindCamera(CameraIdWord({1, 0})), nullptr);
  zebxCloseBoard(2);
  EXPECT_EQ(board->FindCamera(CameraIdWord({2, 0})), nullptr);
  EXPECT_EQ(board->GetDevice(), nullptr);
}

TEST_F(ZebxBoard, OpensWithoutAnyChannel) {
  InitializeWith({MakeVirtualDevice(0x001, 0xC0)});
  EXPECT_EQ(zebxGetBoardNum(), 1U);
  EXPECT_EQ(zebxGetTotalCamera(), 0U);
  EXPECT_EQ(zebxOpenBoard(0, 3, 25), 1);
  EXPECT_EQ(zebxIsBoardOpen(0), 1);
}

TEST(CaptureDevice, WithoutAHandleCoversNoBoardAndClosesAnyBoard) {
  CCaptureDevice device;
  EXPECT_FALSE(device.Covers(0));
  EXPECT_FALSE(device.Covers(CCaptureDevice::kNoBoard));
  EXPECT_EQ(device.OpenBoard(0, 3, 25, "d:"), 0);
  EXPECT_EQ(device.CloseBoard(0), 1);
}

TEST(CaptureDevice, IsCreatedOnceAndCountsItsBoardsOnlyThen) {
  zebdev::SetDevicePlan({MakeVirtualDevice(0x001, 8), MakeVirtualDevice(0x001, 4)});
  EXPECT_EQ(noxdevInitialize(0, 0), 0);
  DWORD boards = 3;
  {
    CCaptureDevice device;
    zebdev::FailCall(Function::kGetDeviceCap, 1);
    EXPECT_EQ(device.Create(0, boards), 0);
    EXPECT_EQ(device.GetHandle(), nullptr);
    EXPECT_EQ(device.Create(9, boards), 0);
    EXPECT_EQ(boards, 3U);
    EXPECT_EQ(device.Create(0, boards), 1);
    EXPECT_EQ(boards, 5U);
    EXPECT_EQ(device.Create(1, boards), 0);
    EXPECT_EQ(boards, 5U);
    EXPECT_EQ(device.CloseBoard(2), 0);
    EXPECT_EQ(device.CloseBoard(5), 0);
    EXPECT_EQ(device.OpenBoard(4, 3, 25, "d:"), 1);
    zebdev::StartJournal();
  }
  const std::vector<CString> expected = {"noxdevCloseDevice 0", "noxdevDestroyDevice 0"};
  EXPECT_EQ(zebdev::TakeJournal(), expected);
  zebdev::SetDevicePlan({});
}

TEST(CaptureCamera, BindsToABoardWithADeviceOnly) {
  CCaptureCamera camera;
  CCaptureBoard board(0, 0, 0, 1);
  const CCaptureDevice device_without_handle;
  EXPECT_EQ(camera.Bind(nullptr, 0, {0, 0}), 0);
  EXPECT_EQ(camera.Bind(&board, 0, {0, 0}), 0);
  EXPECT_EQ(board.Open(&device_without_handle, 3, 25), 1);
  EXPECT_EQ(board.Open(&device_without_handle, 7, 12), 0);
  EXPECT_EQ(board.GetFrameSize(), 3U);
  EXPECT_EQ(camera.Bind(&board, 0, {0, 0}), 0);
  EXPECT_EQ(camera.GetIdWord(), CCaptureCamera::kUnbound);
  EXPECT_EQ(camera.GetDeviceChannel(), CCaptureCamera::kUnbound);
}

}  // namespace
