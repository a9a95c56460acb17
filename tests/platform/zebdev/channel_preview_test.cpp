#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/noxdisplay/streams.h"
#include "platform/zebdev/software/live_caption.h"
#include "tests/platform/zebdev/channel_fixture.h"

using namespace zebx;

namespace {

class LivePicture : public ChannelTest {
 protected:
  void SetUp() override {
    ChannelTest::SetUp();
    StartCamera();
    m_window = Make(AddParameters, nullptr, {0, 0, 176, 144});
    m_host.m_answer = [this](DWORD type, void*) {
      return type == kNoxdevCaptionRequest ? m_caption_answer : 0;
    };
  }
  void TearDown() override {
    ChannelTest::TearDown();
    EXPECT_EQ(noxdisplay::CountStreams(), 0U);
    noxdisplay::ResetDisplay();
  }

  int Show(HWND window) { return noxdevChStartPreviewVideo(m_device, 0, window, 0); }
  // The brightest byte of a window's picture; 0 for black.
  static int BrightestOf(HWND window) {
    int brightest = 0;
    os::WithWindowPicture(window, [&](const os::WindowPicture& picture) {
      for (std::size_t at = 0; at < picture.m_pixels.size(); at += 4) {
        brightest = std::max<int>(brightest, picture.m_pixels[at]);
      }
    });
    return brightest;
  }
  static void Darken(HWND window) {
    os::WithWindowPicture(window, [](const os::WindowPicture& picture) {
      std::ranges::fill(picture.m_pixels, BYTE{0});
    });
  }

  HWND m_window = nullptr;
  int m_caption_answer = 0;
};

TEST_F(LivePicture, IsShownAfterEachFrameWithTheCaptionAskedFor) {
  EXPECT_EQ(Step().size(), 1U);
  EXPECT_EQ(Show(m_window), kGood);
  const auto calls = Step();
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[1].m_type, kNoxdevCaptionRequest);
  EXPECT_EQ(calls[1].m_first, reinterpret_cast<std::uintptr_t>(m_device));
  EXPECT_EQ(noxshowIsSurfaceLost(reinterpret_cast<NoxshowStream>(calls[1].m_second)), 0)
      << "the stream that is shown";
  EXPECT_GT(BrightestOf(m_window), 200);
  m_caption_answer = kNoxdevNotMine;
  Darken(m_window);
  EXPECT_EQ(Step().size(), 2U);
  EXPECT_GT(BrightestOf(m_window), 200);

  // Nothing is asked for what cannot be shown.
  noxdisplay::LoseSurfaces();
  EXPECT_EQ(Step().size(), 1U);
  EXPECT_EQ(noxshowRestore(), 0);
  Darken(m_window);
  EXPECT_EQ(noxdevRestore(m_device), kGood);
  EXPECT_GT(BrightestOf(m_window), 200);
  EXPECT_EQ(Show(nullptr), kGood);
  Darken(m_window);
  EXPECT_EQ(noxdevRestore(m_device), kGood);
  EXPECT_EQ(Step().size(), 1U);
  EXPECT_EQ(BrightestOf(m_window), 0) << "it is shown in no window any more";
  EXPECT_EQ(Show(m_window), kGood);
  os::DestroyWindow(m_window);
  EXPECT_EQ(Step().size(), 1U);
  EXPECT_EQ(noxdevRestore(m_device), kGood);
  EXPECT_EQ(noxdevChStop(m_device, 0), kGood);
  EXPECT_NE(Show(m_window), kGood);
}

TEST_F(LivePicture, HasTheSizeOfItsShowType) {
  const auto created = [&](DWORD mode, DWORD show_type) {
    Open(0x040, 2, mode);
    StartCamera();
    EXPECT_EQ(Show(m_window), kGood);
    EXPECT_EQ(noxdevChChangeShow(m_device, 0, show_type == 1 ? 2 : 1), kGood);
    Step();
    noxdisplay::StartJournal();
    EXPECT_EQ(noxdevChChangeShow(m_device, 0, show_type), kGood);
    Step();
    for (const CString& line : noxdisplay::TakeJournal()) {
      if (line.rfind("noxshowCreateStream ", 0) == 0) return line.substr(20);
    }
    return CString();
  };
  EXPECT_EQ(created(0, 0), "352 288 3");
  EXPECT_EQ(created(0, 1), "176 144 3");
  EXPECT_EQ(created(3, 1), "320 240 3");
  EXPECT_EQ(created(3, 2), "160 120 3");
  noxdisplay::RefuseMode(kNoxshowOverlaySurface, true);
  EXPECT_EQ(created(0, 2), "88 72 3 failed");
  EXPECT_EQ(Step().size(), 2U) << "the plain surface will do";
  EXPECT_NE(noxdevChChangeShow(m_device, 0, 3), kGood);
}

// Whatever of the display fails once, the next frame is shown again.
TEST_F(LivePicture, ComesBackAfterEachFailureOfTheDisplay) {
  using noxdisplay::Function;
  EXPECT_EQ(Show(m_window), kGood);
  const std::pair<Function, std::size_t> cases[] = {{Function::kIsSurfaceLost, 2},
                                                    {Function::kLock, 1},
                                                    {Function::kUnlock, 1},
                                                    {Function::kDisplay, 2},
                                                    {Function::kCreateStream, 2}};
  DWORD show_type = 0;
  for (const auto& [function, calls] : cases) {
    EXPECT_EQ(noxdevChChangeShow(m_device, 0, show_type ^= 1), kGood);
    noxdisplay::FailCall(function, 1);
    EXPECT_EQ(Step().size(), calls) << static_cast<int>(function);
    Darken(m_window);
    EXPECT_EQ(noxdevRestore(m_device), kGood);
    EXPECT_EQ(Step().size(), 2U);
    EXPECT_GT(BrightestOf(m_window), 200);
  }
}

// A host that has the surfaces restored from inside a callback gets the picture when it returns.
TEST_F(LivePicture, IsRestoredFromInsideACallback) {
  EXPECT_EQ(Show(m_window), kGood);
  Step();
  m_host.m_answer = [&](DWORD type, void*) {
    if (type != kNoxdevCaptionRequest) return 0;
    noxdisplay::StartJournal();
    return noxdevRestore(m_device);
  };
  Step();
  std::size_t presented = 0;
  for (const CString& line : noxdisplay::TakeJournal()) {
    presented += line.rfind("noxshowDisplay", 0) == 0 ? 1 : 0;
  }
  EXPECT_EQ(presented, 2U);
}

TEST(LiveCaption, BecomesADisplayRecordWithTheDevicesOwnMarks) {
  tag_CAPTIONINFO caption = {};
  caption.m_bits = zebdev::kCaptionShows | zebdev::kCaptionRecord | 0x80000000;
  // The 64th byte begins a character that does not fit, and nothing ends the field.
  std::fill_n(caption.m_camera_name, 68, '\xC3');
  std::fill_n(caption.m_camera_name, 63, 'x');
  caption.m_camera_name[64] = '\xBC';
  std::strcpy(caption.m_board_name, "T\xC3\xBCr");
  zebdev::MaskAreas masks;
  for (DWORD area = 0; area < 6; ++area) masks.Add({area, 1, area + 2, 3});
  masks.Report(0b000101, 1);

  auto record = zebdev::LiveDisplayRecord(&caption, masks, {true, true, 704, 240});
  using namespace noxdisplay;
  EXPECT_EQ(record.m_flags, DWORD{kShowCameraName | kShowBoardName | kShowClock | kShowRecord |
                                  kShowVideoLost | kShowAudio});
  EXPECT_EQ(CString(record.m_camera_name), CString(63, 'x'));
  EXPECT_STREQ(record.m_board_name, "T\xC3\xBCr");
  EXPECT_EQ(record.m_mask_count, 5U);
  EXPECT_EQ(record.m_masks[2].m_state, DWORD{kMaskSeesMotion | kMaskIsInAlarm});
  EXPECT_EQ(record.m_masks[1].m_state, 0U);
  record = zebdev::LiveDisplayRecord(nullptr, masks, {true, false, 704, 240});
  EXPECT_EQ(record.m_flags, DWORD{kShowVideoLost});
}

}  // namespace
