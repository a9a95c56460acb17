// What is drawn over pictures.
#include "tests/platform/noxdisplay/display_fixture.h"

using namespace zebx::noxdisplay;

namespace {

constexpr DWORD kPicture = 0x406080;
constexpr DWORD kQuiet = 0x20D040, kMotion = 0xFFD020, kAlarm = 0xFF3030;

// The rows of a window's rectangle, `#` for the pixels of a colour.
std::vector<std::string> Art(HWND window, DWORD color, const CRect& area) {
  CRect size;
  os::GetWindowRect(window, &size);
  const Picture picture = PictureOf(window);
  std::vector<std::string> rows;
  for (LONG y = area.top; y < area.bottom; ++y) {
    std::string& row = rows.emplace_back();
    for (LONG x = area.left; x < area.right; ++x) {
      row += picture.at(static_cast<std::size_t>(y * size.Width() + x)) == color ? '#' : '.';
    }
  }
  return rows;
}

class Shown : public DisplayTest {
 protected:
  // A window of that size with a plain picture under what the record says.
  HWND Show(LONG width, LONG height, const tag_DISPLAYINFO& info, DWORD stream_width = 352,
            DWORD stream_height = 288) {
    NoxshowStream stream = MakeStream(stream_width, stream_height);
    HWND window = MakeWindow(width, height);
    const std::size_t pixels = std::size_t{stream_width} * stream_height;
    EXPECT_TRUE(Write(stream, pixels, [](std::size_t) { return kPicture; }));
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
    DWORD m_stream_width, m_stream_height;
    WORD m_encode_width, m_encode_height;
    LONG m_window_width, m_window_height;
    LONG m_left, m_top, m_right, m_bottom;  // of the first mask in the window
  } previews[] = {
      {352, 288, 0, 0, 352, 288, 32, 64, 128, 160},
      {352, 288, 352, 288, 704, 576, 64, 128, 256, 320},
      {176, 144, 352, 288, 352, 288, 32, 64, 128, 160},
      {88, 72, 352, 288, 176, 144, 16, 32, 64, 80},
      {352, 288, 176, 144, 352, 288, 64, 128, 256, 288},
      {704, 288, 720, 288, 720, 576, 32, 128, 128, 320},
  };
  for (const auto& preview : previews) {
    info.m_encode_width = preview.m_encode_width;
    info.m_encode_height = preview.m_encode_height;
    HWND window = Show(preview.m_window_width, preview.m_window_height, info,
                       preview.m_stream_width, preview.m_stream_height);
    SCOPED_TRACE(preview.m_stream_width + preview.m_encode_width);
    const LONG left = preview.m_left, top = preview.m_top;
    EXPECT_EQ(PixelOf(window, left, top), kQuiet);
    EXPECT_EQ(PixelOf(window, preview.m_right - 1, preview.m_bottom - 1), kQuiet);
    EXPECT_EQ(PixelOf(window, left - 1, top), kPicture);
    EXPECT_EQ(PixelOf(window, left, top - 1), kPicture);
    EXPECT_EQ(PixelOf(window, preview.m_right, top), kPicture);
    EXPECT_EQ(PixelOf(window, left + 8, top + 8), kPicture);
  }
  HWND window = Show(352, 288, info, 176, 144);
  EXPECT_EQ(PixelOf(window, 160 * 352 / 720, 64), kMotion);
  EXPECT_EQ(PixelOf(window, 351, 64), kPicture);
  info.m_encode_width = info.m_encode_height = 0;
  window = Show(352, 288, info);
  EXPECT_EQ(PixelOf(window, 351, 100), kAlarm) << "cut at the edge";
  info.m_flags = 0;
  EXPECT_EQ(PictureOf(Show(352, 288, info)), Picture(352 * 288, kPicture));
}

TEST_F(Shown, LettersHaveTheirShapesAndOutlines) {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowCameraName;
  info.m_camera_name_color = 0x00FFFF00;
  SetText(info.m_camera_name, "\u00fc\u2013\u4f60\xff!");
  HWND window = Show(176, 144, info);
  EXPECT_EQ(
      Art(window, 0x00FFFF, {2, 2, 32, 15}),
      (std::vector<std::string>{"..............................", "..............................",
                                ".#.#........#####.#####...#...", ".#.#........#...#.#...#...#...",
                                "............#...#.#...#...#...", "#...#.......#...#.#...#...#...",
                                "#...#.#####.#...#.#...#...#...", "#...#.......#...#.#...#...#...",
                                "#...#.......#...#.#...#...#...", "#..##.......#####.#####.......",
                                ".##.#.....................#...", "..............................",
                                ".............................."}));
  EXPECT_EQ(Art(window, 0x101010, {1, 3, 9, 14}),
            (std::vector<std::string>{".#####..", ".#.#.#..", ".#.#.#..", "#######.", "#.#.#.##",
                                      "#.#.#.#.", "#.#.#.##", "#.###.#.", "#.##..#.", "##..#.#.",
                                      ".######."}));
  // Dark letters have a light outline.
  info.m_camera_name_color = 0;
  window = Show(176, 144, info);
  EXPECT_EQ(PixelOf(window, 1, 6), 0xF0F0F0U);
}

TEST_F(Shown, TextsKeepOutOfEachOthersWay) {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowCameraName | kShowBoardName | kShowClock | kShowBeginTime | kShowEndTime;
  info.m_camera_name_color = 0x0000FF;
  info.m_clock_color = 0x00FF00;
  SetText(info.m_camera_name, std::string(40, 'A'));
  SetText(info.m_clock, "12:34:56");
  SetText(info.m_begin_time, "01:02:03");
  SetText(info.m_end_time, "2026 01 02");
  const Picture long_name = PictureOf(Show(176, 144, info));
  // 176 less two margins, the clock and a space leaves 19 characters of 6 pixels.
  SetText(info.m_camera_name, std::string(18, 'A') + "\u2026" + std::string(1, '\0'));
  EXPECT_EQ(PictureOf(Show(176, 144, info)), long_name);
  EXPECT_NE(std::ranges::count(long_name, 0x00FF00U), 0);
  EXPECT_NE(std::ranges::count(long_name, 0xFF0000U), 0);

  // Captions keep to their rectangle, here the right half of the stream's picture.
  info.m_flags = kShowCameraName;
  info.m_caption_left = 176;
  info.m_caption_right = 352;
  info.m_caption_bottom = 288;
  const Picture half = PictureOf(Show(176, 144, info));
  LONG first = 176;
  for (std::size_t i = 0; i < half.size(); ++i) {
    if (half[i] == 0xFF0000) first = std::min(first, static_cast<LONG>(i % 176));
  }
  EXPECT_EQ(first, 88 + 2);
}

TEST_F(Shown, NothingBeyondTheRecordOrTheWindowIsTouched) {
  // On the heap, exactly as long as it is.
  const auto info = std::make_unique<tag_DISPLAYINFO>();
  std::memset(info.get(), 0xC3, sizeof(tag_DISPLAYINFO));
  for (const DWORD flags : {0xFFFFFFFFU, ~DWORD{kShowVideoLost}}) {
    info->m_flags = flags;
    for (const DWORD text : {0xC3U, 0x25U, 0x41U, 0U}) {
      std::memset(info->m_camera_name, static_cast<int>(text), sizeof(*info) - 128);
      info->m_mask_count = 0xFFFFFFFF;
      constexpr LONG kFar = 0x7FFFFFFF;
      info->m_masks[0] = {-kFar - 1, -kFar - 1, kFar, kFar, 0xFFFFFFFF};
      info->m_masks[1] = {kFar, 0, -kFar, 1, 0};
      info->m_masks[2] = {0, 0, 1, 1, 0};
      for (const CSize size :
           {CSize{1, 1}, {1, 300}, {300, 1}, {7, 14}, {16384, 3}, {1920, 1080}}) {
        info->m_caption_left = -kFar;
        info->m_caption_right = size.cx % 2 == 0 ? kFar : 1;
        info->m_caption_bottom = kFar;
        Show(size.cx, size.cy, *info, 16, 16);
      }
    }
  }
  NoxshowStream stream = MakeStream(16, 16);
  for (const CSize size : {CSize{0, 10}, {-5, 10}, {16385, 1}}) {
    EXPECT_NE(noxshowDisplay(stream, MakeWindow(size.cx, size.cy), info.get()), 0);
  }
}

TEST_F(Shown, StatusPicturesStandForTheirBits) {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowAlarm | kShowRecord | kShowMonitor;
  const Picture without = PictureOf(Show(352, 288, info));
  EXPECT_EQ(without, Picture(352 * 288, kPicture));
  const struct {
    DWORD m_number;
    WORD m_bits;
    BYTE m_byte;
    DWORD m_color;
  } bitmaps[] = {{kNoxshowAlarmPicture, 24, 0xFF, 0xFFFFFF},
                 {kNoxshowRecordPicture, 16, 0x42, 0x849410},
                 {kNoxshowWorkingPicture, 32, 0x7F, 0x7F7F7F},
                 {kNoxshowVideoLostPicture, 8, 0x01, 0x332211}};
  for (const auto& [number, bits, byte, color] : bitmaps) {
    const Canvas canvas(4, bits, 2);  // in a context
    const BYTE colors[] = {0, 0, 0, 0, 0x11, 0x22, 0x33, 0};
    os::SetDIBColorTable(canvas.m_dc, 0, colors);
    std::ranges::fill(canvas.m_bits, byte);
    ASSERT_EQ(noxshowSetBitmap(canvas.m_bitmap, number), 0);
    EXPECT_NE(noxshowSetBitmap(canvas.m_bitmap, 3), 0);
    std::ranges::fill(canvas.m_bits, BYTE{0});
    const auto registered = FindRegisteredPicture(number);
    ASSERT_TRUE(registered);
    EXPECT_EQ(registered->m_pixels, Picture(8, color));
  }
  EXPECT_NE(noxshowSetBitmap(nullptr, kNoxshowAlarmPicture), 0);
  HBITMAP deleted = Canvas(1).m_bitmap;
  EXPECT_NE(noxshowSetBitmap(deleted, kNoxshowAlarmPicture), 0);

  // Marks of a line's height beside each other, from the right: a line has 18 pixels here.
  HWND window = Show(352, 288, info);
  const std::vector<LONG> columns = {348, 311, 273};
  EXPECT_EQ(PixelOf(window, columns[0], 25), 0xFFFFFFU);
  EXPECT_EQ(PixelOf(window, columns[1], 25), 0x849410U);
  EXPECT_EQ(PixelOf(window, columns[2], 25), 0x7F7F7FU);
  info.m_flags |= kShowVideoLost;
  window = Show(352, 288, info);
  EXPECT_EQ(PixelOf(window, 0, 0), 0x332211U) << "all over the window";
  EXPECT_EQ(PixelOf(window, columns[0], 25), 0xFFFFFFU);

  EXPECT_EQ(noxshowBitmap(window, kNoxshowAlarmPicture, 0), 0);
  EXPECT_EQ(PictureOf(window), Picture(352 * 288, 0xFFFFFF));
  EXPECT_EQ(noxshowBitmap(window, kNoxshowIdlePicture, 4), 0);
  EXPECT_EQ(PixelOf(window, 0, 0), 0x30B0FFU) << "the active window's frame";
  EXPECT_EQ(PixelOf(window, 100, 100), 0x181818U);
  const Canvas active(2, 24, 2);
  ASSERT_EQ(noxshowSetBitmap(active.m_bitmap, kNoxshowActivePicture), 0);
  EXPECT_EQ(noxshowBitmap(window, kNoxshowIdlePicture, 4), 0);
  EXPECT_EQ(PixelOf(window, 0, 0), 0x181818U);
  EXPECT_EQ(PixelOf(window, columns[0], 25), 0U) << "its picture in the frame's place";
  EXPECT_NE(noxshowBitmap(window, 0x2000, 0), 0);
}

}  // namespace
