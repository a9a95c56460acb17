#include "capture/show_param.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <thread>
#include <vector>

#include "image/dib_obj.h"
#include "image/image.h"
#include "platform/framework/bitmap.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "tests/support/canvas.h"
#include "tests/support/counted_memory.h"
#include "tests/support/scoped_time_zone.h"

using namespace zebx;

namespace {

using Lines = std::vector<CString>;
Lines g_calls;
std::function<void()> g_during_registration;  // once

Lines TakeCalls() {
  return std::exchange(g_calls, {});
}

// Handles that nobody looks behind.
HWND const kWindow = reinterpret_cast<HWND>(0x11);
NoxshowStream const kStream = reinterpret_cast<NoxshowStream>(0x22);

}  // namespace

// The display that these tests look through. It tells bitmaps by the blue of their pixel.
int noxshowSetBitmap(HBITMAP bitmap, DWORD picture_number) {
  const Canvas canvas(1);
  os::SelectObject(canvas.m_dc, nullptr);
  os::SelectObject(canvas.m_dc, bitmap);
  const DWORD blue = os::GetPixel(canvas.m_dc, 0, 0) >> 16;
  if (g_during_registration) std::exchange(g_during_registration, nullptr)();
  g_calls.push_back(std::to_string(picture_number) + ": " + std::to_string(blue));
  return 0;
}

int noxshowBitmap(HWND window, DWORD picture_number, DWORD flags) {
  EXPECT_EQ(window, kWindow);
  g_calls.push_back("draw " + std::to_string(picture_number) + " " + std::to_string(flags));
  return 0;
}

int noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info) {
  EXPECT_TRUE(stream == kStream && window == kWindow && info == nullptr);
  g_calls.emplace_back("present");
  return 0;
}

namespace {

TEST(ShowParam, CopiesEveryValueOrNone) {
  const ScopedTimeZone zone("UTC-3");
  CShowParam show;
  show.SetHostName("h");
  show.SetBoardName("b");
  show.SetCameraName("c");
  show.SetTimeBegin(CTime(1));
  show.SetTimeEnd(CTime(86399));
  show.SetTimeCur(CTime(100));
  show.SetTimeCur("soon");
  show.SetCaptionColor(0x123456);
  show.SetScale(50);
  CImage image;
  show.GetImage(&image);
  EXPECT_EQ(image.GetHostName(), "") << "there is no stream";
  show.SetDrawStream(kStream);
  show.Create(kWindow, 5);
  const CShowParam& itself = show;
  show = itself;

  CShowParam copy, fresh;
  copy.SetHostName(CString(100, 'x'));
  copy.SetScale(7);
  counted_memory::calls_left = 0;
  EXPECT_THROW(fresh = copy, std::bad_alloc);
  counted_memory::calls_left = -1;
  EXPECT_EQ(fresh.GetScaleName(), "100%") << "nothing is copied in part";
  copy = show;
  EXPECT_EQ(copy.GetImage(&image) + copy.GetImage(nullptr), 0);
  EXPECT_EQ(image.GetTimeStamp(), 100U) << "whatever the text says";
  copy.SetTimeEnd("to");
  EXPECT_EQ((Lines{copy.GetHostName(), copy.GetBoardName(), copy.GetCameraName(),
                   copy.GetTimeBegin(), copy.GetTimeEnd(), copy.GetTimeCur(), copy.GetScaleName()}),
            (Lines{"h", "b", "c", "03:00:01", "to", "soon", "50%"}));
  EXPECT_EQ(copy.GetCaptionColor(), 0x123456U);
  fresh.Create(kWindow, 0);
  fresh.SetActive(1);
  fresh.Show(nullptr);
  copy.Show(nullptr);
  EXPECT_EQ(TakeCalls(), (Lines{"draw 4096 4", "present"}));
}

TEST(ShowParam, IsReadWholeWhileOtherThreadsWriteIt) {
  std::array<CShowParam, 2> values;
  for (std::size_t i = 0; i < 2; ++i) {
    values[i].SetBoardName(CString(100, i == 0 ? 'a' : 'b'));
    values[i].SetTimeBegin(values[i].GetBoardName());
  }
  CShowParam shared(values[0]), other(values[1]);
  const auto repeat = [](auto step) {
    return std::jthread([step](const std::stop_token& stop) {
      for (DWORD i = 0; !stop.stop_requested(); std::this_thread::yield()) step(++i);
    });
  };
  const std::array threads = {repeat([&](DWORD i) {
                                shared = values[i % 2];
                                shared.SetAlarm(static_cast<int>(i % 2));
                                shared.SetTimeCur(CTime(i));
                              }),
                              // These do not wait for each other for ever.
                              repeat([&](DWORD) { other = shared; }),
                              repeat([&](DWORD) { shared = other; })};
  CaptionTexts texts, before;
  for (int changes = 0; changes < 50;) {
    shared.GetCaptionTexts(&texts);
    ASSERT_EQ(texts.m_board_name, texts.m_time_begin);
    if (texts.m_board_name != std::exchange(before, texts).m_board_name) ++changes;
  }
}

// A bitmap of one blue pixel that counts itself.
class Picture : public CBitmap {
 public:
  explicit Picture(BYTE blue) {
    std::span<BYTE> bits;
    Attach(os::CreateDIBSection(os::GetDC(nullptr), HeaderOf(1, 1, 32), &bits));
    bits[0] = blue;
    ++s_alive;
  }
  ~Picture() override { --s_alive; }

  static inline int s_alive = 0;
};

CDibObj* MakeDib(BYTE blue) {
  std::vector<BYTE> packed = {40, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 24, 0};
  packed.resize(44);
  packed[40] = blue;
  os::RegisterBitmapResource(1, packed);
  auto* dib = new CDibObj;
  dib->LoadBmp(1U);
  return dib;
}

class StatusPictures : public testing::Test {
 protected:
  void TearDown() override {
    for (const auto set : kSetImage) set(nullptr, nullptr);
    for (const auto set : kSetMark) set(nullptr);
    EXPECT_EQ(Picture::s_alive, 0);
    EXPECT_EQ(TakeCalls(), Lines{}) << "no picture is no call";
  }

  static constexpr void (*kSetImage[])(CDibObj*, CBitmap*) = {
      &CShowParam::SetVideoLostImage, &CShowParam::SetWorkingImage, &CShowParam::SetIdleImage};
  static constexpr void (*kSetMark[])(CBitmap*) = {
      &CShowParam::SetActiveBmp, &CShowParam::SetRecordBmp, &CShowParam::SetAudioBmp,
      &CShowParam::SetAlarmBmp, &CShowParam::SetProgramBmp};
};

TEST_F(StatusPictures, AreRegisteredAndRestoredButForDibsAndTheProgramMark) {
  for (BYTE i = 0; i < 3; ++i) kSetImage[i](MakeDib(i), new Picture(100 + i));
  for (BYTE i = 0; i < 5; ++i) kSetMark[i](new Picture(200 + i));
  CShowParam::SetWorkingImage(MakeDib(3), nullptr);
  EXPECT_EQ(TakeCalls(), (Lines{"2048: 0", "1: 1", "4096: 2", "32: 200", "512: 201", "1024: 202",
                                "64: 203", "16: 204", "1: 3"}));
  CShowParam::Restore();
  EXPECT_EQ(TakeCalls(),
            (Lines{"2048: 100", "4096: 102", "32: 200", "512: 201", "1024: 202", "64: 203"}));
}

TEST_F(StatusPictures, AreDestroyedWhenNoStateHasThemAnyMore) {
  CBitmap* kept = new Picture(1);
  CDibObj *dib = MakeDib(9), *got_dib = nullptr;
  CBitmap* got = nullptr;
  for (int i = 0; i < 2; ++i) CShowParam::SetIdleImage(dib, kept);
  CShowParam::GetIdleImage(&got_dib, &got);
  EXPECT_TRUE(got_dib == dib && got == kept);
  CShowParam::SetIdleImage(nullptr, kept);
  CShowParam::SetAlarmBmp(kept);
  CShowParam::SetIdleImage(nullptr, nullptr);
  CShowParam::SetAlarmBmp(kept);
  EXPECT_EQ(TakeCalls(), (Lines{"4096: 9", "4096: 9", "4096: 1", "64: 1", "64: 1"}));
  // One that somebody draws into goes as well.
  HBITMAP handle = kept->GetSafeHandle();
  const Canvas canvas(1);
  os::SelectObject(canvas.m_dc, nullptr);
  os::SelectObject(canvas.m_dc, handle);
  CShowParam::SetAlarmBmp(nullptr);
  EXPECT_EQ(Picture::s_alive, 0);
  EXPECT_EQ(os::DeleteObject(handle), 0) << "it is deleted already";
}

TEST_F(StatusPictures, StayTheLastOnesWhenReplacedDuringARegistration) {
  // The other thread's whole call falls into this one's.
  const auto replace = [] { CShowParam::SetIdleImage(MakeDib(2), new Picture(3)); };
  g_during_registration = replace;
  CShowParam::SetIdleImage(nullptr, new Picture(4));
  EXPECT_EQ(TakeCalls(), (Lines{"4096: 2", "4096: 4", "4096: 2"}));
  g_during_registration = replace;
  CShowParam::Restore();
  EXPECT_EQ(TakeCalls(), (Lines{"4096: 2", "4096: 3", "4096: 2"}));
}

}  // namespace
