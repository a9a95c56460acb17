// Cameras are opened, set up anew and closed: what reaches the device library, and what is left
// when it refuses.
#include <algorithm>
#include <bit>

#include "image/image.h"
#include "tests/capture/camera_fixture.h"

using namespace zebx;

namespace {

using zebdev::Function;

class Camera : public CameraLibrary {};

TEST_F(Camera, OpensAndClosesStepByStep) {
  OpenBoard();
  CMaskList masks;
  AddMask(masks, 3);
  AddMask(masks, 9);
  CVideoColor color(6, kVideoStandardPal);
  color.SetValue(11, tag_VCLR{2});
  color.SetValue(22, tag_VCLR{3});
  m_show.SetCameraName("Yard");
  m_show.SetDrawStream(std::bit_cast<NoxshowStream>(std::uintptr_t{8}));
  const CEncodeParam settings;
  TakeCalls();
  EXPECT_EQ(zebxOpenCamera(&m_id, 99, &settings, &masks, &color, &m_show), 1);
  EXPECT_EQ(
      TakeCalls(),
      (Lines{"noxdevChSetChannelName 0 0 Yard", "noxdevChAddMaskArea 0 0 3 1 5 3",
             "noxdevChAddMaskArea 0 0 9 1 11 3", "noxdevChSetConfig 0 0 222 9 5 25 8 3 4294967295",
             "noxdevChSetVideoColor 0 0 124 66 22 11", "noxdevChStart 0 0 0",
             "noxdevChStartPreviewVideo 0 0 0 0"}));
  EXPECT_EQ(m_show.GetDrawStream(), nullptr);
  EXPECT_EQ(zebxIsCameraOpen(&m_id) & zebxIsWork(), 1);
  noxdisplay::StartJournal();
  EXPECT_EQ(zebxCloseCamera(&m_id), 1);
  EXPECT_EQ(TakeCalls(), (Lines{"noxdevChClearMaskArea 0 0", "noxdevChStop 0 0"}));
  EXPECT_EQ(noxdisplay::TakeJournal(), Lines{"noxshowBitmap 0 4096 0 failed"}) << "no window";
  EXPECT_EQ(zebxIsCameraOpen(&m_id) | zebxIsWork(), 0);
}

// The second stream is started, whatever the device says to that, on boards whose type is 11 and
// not on those whose type only looks like it.
TEST_F(Camera, HasASecondStreamOnOneTypeOfBoardOnly) {
  OpenBoard(0x800, 8);
  ASSERT_EQ(zebxOpenBoard(1, kPalHalf, 25), 1);
  zebdev::FailCall(Function::kChStart, 2);
  EXPECT_EQ(Open(), 1);
  TakeCalls();
  EXPECT_EQ(zebxCloseCamera(&m_id), 1);
  EXPECT_EQ(TakeCalls(), (Lines{"noxdevChStop 0 0", "noxdevChStop 0 2"}));
  m_id = {1, 1};
  EXPECT_EQ(Open() & zebxCloseCamera(&m_id), 1);
  const Lines calls = TakeCalls();
  EXPECT_EQ(Lines(calls.end() - 2, calls.end()),
            (Lines{"noxdevChStartPreviewVideo 0 5 0 0", "noxdevChStop 0 5"}));
}

TEST_F(Camera, KeepsShowSettingsApartFromBeingOpen) {
  OpenBoard();
  const auto shown = [this] { return GetCaptureApp().FindCamera(&m_id)->GetShowParam(); };
  EXPECT_EQ(zebxCreateCamera(&m_id, &m_show) & zebxCloseCamera(&m_id), 1);
  EXPECT_EQ(shown(), &m_show) << "closing a closed camera";
  EXPECT_EQ(zebxOpenCamera(&m_id, 0, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(shown(), nullptr);
  EXPECT_EQ(Open(), 1);
  TakeCalls();
  CShowParam other;
  EXPECT_EQ(zebxOpenCamera(&m_id, 0, nullptr, nullptr, nullptr, &other), 1);
  EXPECT_EQ(shown(), &other);
  EXPECT_EQ(zebxOpenCamera(&m_id, 0, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(TakeCalls(), Lines{}) << "nothing but the show settings is new";
  EXPECT_EQ(zebxDestroyCamera(&m_id), 0);
  EXPECT_EQ(TakeCalls(), (Lines{"noxdevChStop 0 0", "noxdevChStop 0 0"}));
}

TEST_F(Camera, TakesOtherSettingsAndSpeedsWhileItRuns) {
  OpenBoard();
  CEncodeParam settings;
  EXPECT_EQ(zebxRequestNextFrame(&m_id, &settings, 1), 0) << "closed";
  EXPECT_EQ(Open(), 1);
  TakeCalls();
  zebxSetWaterMarkTrans(100);
  zebxEnableWaterMark(1);
  const CString equal = "noxdevChSetConfig 0 0 0 8 0 0 0 0 100";
  EXPECT_EQ(zebxRequestNextFrame(&m_id, &settings, 2), 1);
  EXPECT_EQ(TakeCalls(), (Lines{equal, "noxdevChStopPreviewAudio 0 0"}));
  settings.SetQuarity(1);
  settings.EnableVideo(0);
  settings.EnableAudio(1);
  settings.EnableVideoLostCheck(0);
  m_show.SetPreviewAudio(1);
  EXPECT_EQ(zebxRequestNextFrame(&m_id, &settings, 3), 1);
  EXPECT_EQ(TakeCalls(), (Lines{"noxdevChSetConfig 0 0 94 14 1 25 8 3 100",
                                "noxdevChStartPreviewAudio 0 0", "noxdevChRequestIFrame 0 0"}));
  zebxCreateCamera(&m_id, nullptr);
  zebxRequestNextFrame(&m_id, &settings, 0);
  EXPECT_EQ(TakeCalls(), (Lines{equal, "noxdevChStopPreviewAudio 0 0"}));
  zebxEnableWaterMark(0);

  // A speed goes to every camera with show settings. The rates of an open one then start anew at
  // the frame before, unless the device refuses.
  zebxCreateCamera(&m_id, &m_show);
  const tag_ZEBCAMERAID closed = {0, 2};
  zebxCreateCamera(&closed, &m_show);
  for (const DWORD speed : {25U, 12U, 13U}) {
    BringFrame(Packet(0, 1000, "I"));
    BringFrame(Packet(1, 1040, "P"));
    TakeCalls();
    if (speed == 13) zebdev::FailCall(Function::kChSetConfig, 1);
    EXPECT_EQ(zebxSetSpeed(0, speed), 1);
    EXPECT_EQ(TakeCalls().size(), speed == 25 ? 0U : 2U);
    BringFrame(Packet(1, 1080, "P"));
    EXPECT_EQ(m_frame->GetFrameIndex(), speed == 12 ? 1 : 2);
  }
}

TEST_F(Camera, TakesPicturesOfTheShowSize) {
  OpenBoard();
  CImage image;
  EXPECT_EQ(zebxGetPicture(&m_id, nullptr), 0);
  zebdev::FailCall(Function::kChCapturePicture, 1);
  EXPECT_EQ(zebxGetPicture(&m_id, &image), 0);
  EXPECT_EQ(zebxGetPicture(&m_id, &image), 1);
  EXPECT_EQ(TakeCalls().back(), "noxdevChCapturePicture 0 0 704 576 -2112 1");
  EXPECT_EQ(image.GetImageWidth() * 1000 + image.GetImageHeight(), 704576U);
  ASSERT_EQ(zebxOpenBoard(1, 77, 25), 1);  // which is no frame size
  m_id = {1, 0};
  EXPECT_EQ(zebxGetPicture(&m_id, &image), 0);
  EXPECT_EQ(TakeCalls(), Lines{});
}

TEST_F(Camera, MasksComeAndGoWhileItRuns) {
  OpenBoard();
  CMaskInfo unplaced;
  EXPECT_EQ(zebxAddMask(&m_id, &unplaced), 0) << "closed";
  CMaskList masks;
  AddMask(masks, 3);
  EXPECT_EQ(Open(&masks), 1);
  TakeCalls();
  EXPECT_EQ(zebxAddMask(&m_id, nullptr), 0);
  EXPECT_EQ(zebxAddMask(&m_id, &unplaced), 0) << "an area without size, which the device refuses";
  auto added = std::make_unique<CMaskInfo>();
  const CRect blocks{4, 5, 6, 7};
  added->SetMBRect(&blocks, tag_FRAMESIZE{kPalHalf});
  EXPECT_EQ(zebxAddMask(&m_id, added.get()), 1);
  EXPECT_EQ(zebxAddMask(&m_id, added.release()), 1) << "known to the list already";
  EXPECT_EQ(TakeCalls(),
            (Lines{"noxdevChAddMaskArea 0 0 0 0 0 0 failed", "noxdevChAddMaskArea 0 0 4 5 6 7",
                   "noxdevChAddMaskArea 0 0 4 5 6 7"}));
  BringFrame(Packet(0, 1000, "I"));
  EXPECT_EQ(m_frame->GetMaskList()->GetCount(), 2U);
  EXPECT_EQ(zebxDeleteAllMask(&m_id) & zebxDeleteAllMask(&m_id), 1);
  EXPECT_EQ(TakeCalls(), Lines{"noxdevChClearMaskArea 0 0"});
  EXPECT_TRUE(m_frame->GetMaskList()->IsEmpty());
}

TEST_F(Camera, ColoursComeBackAsTheyWereGiven) {
  OpenBoard();
  CVideoColor color(6, kVideoStandardPal), read(6, kVideoStandardPal);
  for (const DWORD i : {0U, 1U, 2U, 3U})
    color.SetValue(static_cast<std::int16_t>(i + 10), tag_VCLR{i});
  EXPECT_EQ(zebxSetVideoColor(&m_id, &color) & zebxGetVideoColor(&m_id, &read), 1);
  zebdev::FailCall(Function::kChGetVideoColor, 1);
  EXPECT_EQ(zebxGetVideoColor(&m_id, &read) | zebxGetVideoColor(&m_id, nullptr) |
                zebxSetVideoColor(&m_id, nullptr),
            0);
  for (const DWORD i : {0U, 1U, 2U, 3U}) EXPECT_EQ(read.GetValue(tag_VCLR{i}), 10 + int(i));
}

// Every call of a whole session fails once. Whatever it was, no areas are left behind at the
// device, the camera opens the next time and brings frames, and what was created and opened is
// destroyed and closed. A board or camera is as open as its opening said.
TEST_F(Camera, AnyCallMayFail) {
  CMaskList masks;
  AddMask(masks, 3);
  const CVideoColor color(11, kVideoStandardPal);
  const CEncodeParam settings;
  const auto count = [](const Lines& lines, const CString& name, const CString& end) {
    return std::count_if(lines.begin(), lines.end(), [&](const CString& line) {
      return line.starts_with(name) && line.ends_with(end);
    });
  };
  const auto session = [&](int function, DWORD failing_call) {
    Plan({zebdev::MakeVirtualDevice(0x800, 2), zebdev::MakeVirtualDevice(0x001, 4)});
    zebdev::SetDrive(zebdev::Drive::kStepped);
    if (failing_call != 0) zebdev::FailCall(static_cast<Function>(function), failing_call);
    const int is_started = Initialize();
    EXPECT_EQ(zebxIsZebxInit(), is_started);
    const int is_opened = zebxOpenBoard(0, kPalHalf, 25);
    EXPECT_EQ(zebxIsBoardOpen(0), is_opened);
    const int answer = zebxOpenCamera(&m_id, 0, &settings, &masks, &color, &m_show);
    EXPECT_EQ(zebxIsCameraOpen(&m_id), answer);
    zebxRequestNextFrame(&m_id, &settings, 1);
    zebxCloseCamera(&m_id);
    Lines calls = TakeCalls();
    if (count(calls, "noxdevCh", " failed") != 0) {
      EXPECT_EQ(count(calls, "noxdevChClearMaskArea", ""), 1);
      EXPECT_EQ(Open(), 1);
      m_notified = 0;
      BringFrame(Packet(0, 1000, "I"));
      EXPECT_EQ(m_notified, 1);
      zebxCloseCamera(&m_id);
      EXPECT_EQ(Call(0, 0, 0, nullptr) & Call(0, 0, 0, nullptr, 2), -2) << "both are stopped";
      TakeCalls();
    }
    EXPECT_EQ(zebxCloseBoard(0), zebxIsValidBoardIndex(0));
    EXPECT_EQ(zebxIsBoardOpen(0), 0);
    zebxCloseZebx();
    for (CString& line : TakeCalls()) calls.push_back(std::move(line));
    return calls;
  };
  const Lines undisturbed = session(0, 0);
  std::size_t failures = 0;
  for (int function = 0; function < zebdev::kFunctions; ++function) {
    for (DWORD nth = 1;; ++nth, ++failures) {
      SCOPED_TRACE(testing::Message() << "function " << function << ", call " << nth);
      const Lines calls = session(function, nth);
      if (calls == undisturbed) break;
      EXPECT_EQ(count(calls, "", " failed"), 1);
      for (const auto& [begins, ends] : {std::pair("noxdevCreateDevice", "noxdevDestroyDevice"),
                                         {"noxdevOpenDevice", "noxdevCloseDevice"}}) {
        EXPECT_EQ(count(calls, begins, "") - count(calls, begins, " failed"),
                  count(calls, ends, ""));
      }
    }
  }
  EXPECT_EQ(failures, undisturbed.size());
}

}  // namespace
