// What is drawn over pictures.
#include <limits>
#include <random>

#include "tests/platform/noxdisplay/display_fixture.h"

using namespace zebx::noxdisplay;

namespace {

constexpr DWORD kPicture = 0x406080, kFrame = 0x30B0FF;
constexpr DWORD kQuiet = 0x20D040, kMotion = 0xFFD020, kAlarm = 0xFF3030;

// The smallest rectangle that has all pixels of a colour; empty when there are none.
CRect BoundsOf(HWND window, DWORD color) {
  CRect size, bounds = {1 << 15, 1 << 15, 0, 0};
  os::GetWindowRect(window, &size);
  LONG at = 0;
  for (const DWORD pixel : PictureOf(window)) {
    const LONG x = at % size.Width(), y = at / size.Width();
    ++at;
    if (pixel != color) continue;
    bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
              std::max(bounds.bottom, y + 1)};
  }
  return bounds.IsEmpty() ? CRect() : bounds;
}

class Shown : public DisplayTest {
 protected:
  // A window of that size with a plain picture under what the record says.
  HWND Show(CSize size, const tag_DISPLAYINFO& info, CSize stream_size = {352, 288}) {
    const auto width = static_cast<DWORD>(stream_size.cx);
    const auto height = static_cast<DWORD>(stream_size.cy);
    NoxshowStream stream = MakeStream(width, height);
    HWND window = MakeWindow(size.cx, size.cy);
    EXPECT_TRUE(Write(stream, std::size_t{width} * height, [](std::size_t) { return kPicture; }));
    EXPECT_EQ(noxshowDisplay(stream, window, &info), 0);
    return window;
  }
};

TEST_F(Shown, MasksLieWhereTheyAreAtEverySizeOfThePreview) {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowMasks;
  info.m_mask_count = 3;
  info.m_masks[0] = {2, 4, 8, 10, 0};
  info.m_masks[1] = {10, 4, 12, 10, kMaskSeesMotion};
  info.m_masks[2] = {14, 4, 30, 10, kMaskSeesMotion | kMaskIsInAlarm};
  const struct {
    CSize m_stream, m_encode, m_window;
    CRect m_mask;  // the first one in the window
  } previews[] = {
      {{352, 288}, {352, 288}, {704, 576}, {64, 128, 256, 320}},
      {{176, 144}, {352, 288}, {352, 288}, {32, 64, 128, 160}},
      {{88, 72}, {352, 288}, {176, 144}, {16, 32, 64, 80}},
      {{352, 288}, {176, 144}, {352, 288}, {64, 128, 256, 288}},
      {{704, 288}, {720, 288}, {720, 576}, {32, 128, 128, 320}},
      {{352, 288}, {0, 0}, {352, 288}, {32, 64, 128, 160}},
  };
  HWND window = nullptr;
  for (const auto& [stream, encode, size, mask] : previews) {
    info.m_encode_width = static_cast<WORD>(encode.cx);
    info.m_encode_height = static_cast<WORD>(encode.cy);
    window = Show(size, info, stream);
    EXPECT_EQ(BoundsOf(window, kQuiet), mask) << stream.cx << ' ' << encode.cx;
    EXPECT_EQ(PixelOf(window, mask.left + 8, mask.top + 8), kPicture);
  }
  EXPECT_EQ(BoundsOf(window, kMotion), (CRect{160, 64, 192, 160}));
  EXPECT_EQ(BoundsOf(window, kAlarm), (CRect{224, 64, 352, 160})) << "cut at the edge";
  info.m_flags |= kShowActive;
  info.m_masks[0] = {0, 0, 22, 18, 0};
  EXPECT_EQ(BoundsOf(Show({352, 288}, info), kQuiet), (CRect{4, 4, 348, 284})) << "in the frame";
}

TEST_F(Shown, LettersHaveTheirShapesAndOutlines) {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowCameraName;
  info.m_camera_name_color = 0x00FFFF00;
  const auto show = [&](const std::string& name) {
    SetText(info.m_camera_name, name + std::string(1, '\0'));
    return PictureOf(Show({176, 144}, info));
  };
  const Picture picture = show("\u00fc\u2013\xff!");
  std::vector<std::string> rows;
  for (std::size_t y = 4; y < 15; ++y) {
    std::string& row = rows.emplace_back();
    for (std::size_t x = 2; x < 27; ++x) {
      const DWORD pixel = picture[y * 176 + x];
      row += pixel == 0x00FFFF ? '#' : pixel == 0x101010 ? '+' : '.';
    }
  }
  EXPECT_EQ(
      rows,
      (std::vector<std::string>{
          ".+++++......+++++++.+++..", ".+#+#+......+#####+.+#+..", ".+#+#+......+#+++#+.+#+..",
          "+++++++.....+#+.+#+.+#+..", "+#+.+#+++++++#+.+#+.+#+..", "+#+.+#+#####+#+.+#+.+#+..",
          "+#+.+#+++++++#+.+#+.+#+..", "+#+++#+.....+#+++#+.+#+..", "+#++##+.....+#####+.+++..",
          "++##+#+.....+++++++.+#+..", ".++++++.............+++.."}));
  // What looks alike, and what is no UTF-8 although it could be read as a letter.
  EXPECT_EQ(show("\u2212\u2010\u2039\u202f\u2032\u2015."), show("\u2013-< '\u2014."));
  EXPECT_EQ(show("\xe0\x81\x81\xf0\x80\x81\x81\u4f60"), show(std::string(8, '\xff')));
  info.m_camera_name_color = 0;
  EXPECT_EQ(show("\u00fc")[7 * 176 + 2], 0xF0F0F0U) << "dark letters have a light outline";
}

TEST_F(Shown, TextsKeepOutOfEachOthersWay) {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowCameraName | kShowBoardName | kShowClock | kShowBeginTime | kShowEndTime;
  info.m_camera_name_color = 0x0000FF;
  info.m_clock_color = 0x00FF00;
  info.m_board_name_color = 0xFF0000;
  SetText(info.m_camera_name, std::string(40, 'A'));
  SetText(info.m_board_name, "Board");
  SetText(info.m_clock, "12:34:56");
  SetText(info.m_begin_time, "01:02:03");
  SetText(info.m_end_time, "2026 01 02");
  const Picture long_name = PictureOf(Show({176, 144}, info));
  // 176 less two margins, the clock and a space leaves 19 characters of 6 pixels.
  SetText(info.m_camera_name, std::string(18, 'A') + "\u2026" + std::string(1, '\0'));
  HWND window = Show({176, 144}, info);
  EXPECT_EQ(PictureOf(window), long_name);
  EXPECT_EQ(BoundsOf(window, 0x00FF00), (CRect{3, 5, 172, 140})) << "the clock and both times";
  EXPECT_EQ(BoundsOf(window, 0x0000FF).top, 19) << "the board name";

  // A window's frame is left free.
  info.m_flags |= kShowActive;
  for (const CSize size : {CSize{176, 144}, {704, 576}}) {
    tag_DISPLAYINFO bare = {};
    bare.m_flags = kShowActive;
    const Picture frame = PictureOf(Show(size, bare)), all = PictureOf(Show(size, info));
    EXPECT_EQ(std::ranges::count(all, kFrame), std::ranges::count(frame, kFrame));
  }
  // Captions keep to their rectangle, here a strip at the right with room for one line.
  info.m_caption_left = 176;
  info.m_caption_right = 352;
  info.m_caption_bottom = 40;
  window = Show({176, 144}, info);
  EXPECT_EQ(BoundsOf(window, 0xFF0000).left, 88 + 3);
  EXPECT_TRUE(BoundsOf(window, 0x0000FF).IsEmpty());
}

TEST_F(Shown, NothingBeyondTheRecordOrTheWindowIsTouched) {
  constexpr CSize kSizes[] = {{1, 1}, {1, 300}, {300, 1}, {7, 14}, {16384, 3}, {352, 288}};
  constexpr DWORD kWords[] = {0, 1, 0x25252525, 0x41414141, 0xC3C3C3C3, 0x7FFFFFFF, 0x80000000};
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp)
  std::minstd_rand random(1);
  const auto info = std::make_unique<tag_DISPLAYINFO>();  // exactly as long as it is
  auto* const words = reinterpret_cast<DWORD*>(info.get());
  for (int round = 0; round < 200; ++round) {
    const DWORD all = kWords[random() % std::size(kWords)];
    for (std::size_t i = 0; i < sizeof(*info) / sizeof(DWORD); ++i) {
      words[i] = round % 2 == 0 && i > 1 ? all : kWords[random() % std::size(kWords)];
    }
    info->m_flags = round % 4 == 0 ? 0xFFFFFFFF : 0xFFFFFFFF & ~DWORD{kShowVideoLost};
    Show(kSizes[random() % std::size(kSizes)], *info, {16, 16});
  }
  for (const CSize size : {CSize{0, 10}, {-5, 10}, {16385, 1}}) {
    EXPECT_NE(noxshowDisplay(MakeStream(16, 16), MakeWindow(size.cx, size.cy), info.get()), 0);
  }
}

TEST_F(Shown, StatusPicturesStandForTheirBits) {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowAlarm | kShowRecord | kShowMonitor;
  EXPECT_EQ(PictureOf(Show({352, 288}, info)), Picture(352 * 288, kPicture));
  const struct {
    DWORD m_number;
    WORD m_bits;
    BYTE m_byte;
    DWORD m_color;
  } bitmaps[] = {
      {kNoxshowAlarmPicture, 24, 0xFF, 0xFFFFFF},   {kNoxshowRecordPicture, 16, 0x42, 0x849410},
      {kNoxshowWorkingPicture, 32, 0x7F, 0x7F7F7F}, {kNoxshowIdlePicture, 4, 0x11, 0x332211},
      {kNoxshowProgramPicture, 1, 0xFF, 0x332211},  {kNoxshowVideoLostPicture, 8, 0x01, 0x332211}};
  for (const auto& [number, bits, byte, color] : bitmaps) {
    const Canvas canvas(4, bits, 2);  // in a context
    const BYTE colors[] = {0, 0, 0, 0, 0x11, 0x22, 0x33, 0};
    os::SetDIBColorTable(canvas.m_dc, 0, colors);
    std::ranges::fill(canvas.m_bits, byte);
    ASSERT_EQ(noxshowSetBitmap(canvas.m_bitmap, number), 0);
    EXPECT_NE(noxshowSetBitmap(canvas.m_bitmap, 3), 0);
    std::ranges::fill(canvas.m_bits, BYTE{0});
    EXPECT_EQ(FindRegisteredPicture(number).value().m_pixels, Picture(8, color));
  }
  const Canvas large(16385, 1);
  HBITMAP deleted = Canvas(1).m_bitmap;
  for (HBITMAP bad : {HBITMAP{}, deleted, large.m_bitmap}) {
    EXPECT_NE(noxshowSetBitmap(bad, kNoxshowAlarmPicture), 0);
  }

  // Marks of a line's height beside each other, from the right: a line has 18 pixels here.
  HWND window = Show({352, 288}, info);
  EXPECT_EQ(BoundsOf(window, 0xFFFFFF), (CRect{311, 24, 347, 42}));
  EXPECT_EQ(BoundsOf(window, 0x849410), (CRect{273, 24, 309, 42}));
  EXPECT_EQ(BoundsOf(window, 0x7F7F7F), (CRect{235, 24, 271, 42}));
  info.m_flags |= kShowVideoLost;
  window = Show({352, 288}, info);
  EXPECT_EQ(BoundsOf(window, 0x332211), (CRect{0, 0, 352, 288})) << "all over the window";
  EXPECT_EQ(PixelOf(window, 346, 25), 0xFFFFFFU);

  EXPECT_EQ(noxshowBitmap(window, kNoxshowAlarmPicture, 4), 0);
  EXPECT_EQ(PixelOf(window, 0, 0), kFrame) << "the active window";
  const Canvas active(2, 24, 2);
  ASSERT_EQ(noxshowSetBitmap(active.m_bitmap, kNoxshowActivePicture), 0);
  EXPECT_EQ(noxshowBitmap(window, kNoxshowAlarmPicture, 4), 0);
  EXPECT_EQ(BoundsOf(window, 0), (CRect{329, 24, 347, 42})) << "its picture in the frame's place";
  EXPECT_EQ(PixelOf(window, 0, 0), 0xFFFFFFU);
  EXPECT_EQ(noxshowBitmap(window, kNoxshowAudioPicture, 0), 0);
  EXPECT_EQ(PictureOf(window), Picture(352 * 288, 0x181818)) << "none is registered";
  EXPECT_NE(noxshowBitmap(window, 0x2000, 0), 0);
}

}  // namespace
