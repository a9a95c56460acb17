#include "tools/zebtool/screen/status_marks.h"

#include <cstdlib>
#include <memory>
#include <vector>

#include "capture/show_param.h"
#include "platform/framework/bitmap.h"
#include "platform/os/graphics/graphics.h"

namespace zebtool {
namespace {

constexpr int kSide = 32;  // pixels
constexpr int kCentre = kSide / 2;

struct Rgb {
  BYTE red, green, blue;
};
constexpr Rgb kDark = {0x18, 0x18, 0x18};
constexpr Rgb kRed = {0xF0, 0x28, 0x28};
constexpr Rgb kGreen = {0x50, 0xE0, 0x60};
constexpr Rgb kAmber = {0xFF, 0xC0, 0x20};

// From the top left corner.
Rgb RecordPixel(int x, int y) {
  constexpr int kRadius = 11;
  const int across = x - kCentre;
  const int down = y - kCentre;
  return across * across + down * down <= kRadius * kRadius ? kRed : kDark;
}

Rgb AlarmPixel(int x, int y) {
  constexpr int kTop = 3;
  constexpr int kBottom = 28;
  const int across = std::abs(x - kCentre);
  const bool is_inside = y >= kTop && y <= kBottom && 2 * across <= y - kTop;
  const bool is_stroke = across <= 1 && ((y >= 12 && y <= 20) || (y >= 23 && y <= 25));
  return is_inside && !is_stroke ? kAmber : kDark;
}

// A loudspeaker with two waves of sound.
Rgb SoundPixel(int x, int y) {
  const int down = std::abs(y - kCentre);
  const bool is_box = x >= 4 && x <= 9 && down <= 4;
  const bool is_cone = x >= 9 && x <= 15 && down <= x - 5;
  const int across = x - 13;
  const int distance = across * across + down * down;
  const bool is_wave =
      across > down && ((distance >= 49 && distance <= 81) || (distance >= 144 && distance <= 196));
  return is_box || is_cone || is_wave ? kGreen : kDark;
}

std::unique_ptr<CBitmap> MakeMark(Rgb (*pixel_at)(int x, int y)) {
  os::BitmapInfoHeader header;
  header.m_width = kSide;
  header.m_height = kSide;
  header.m_bit_count = 24;
  std::vector<BYTE> rows;
  for (int y = kSide; y-- > 0;) {
    for (int x = 0; x < kSide; ++x) {
      const Rgb pixel = pixel_at(x, y);
      rows.insert(rows.end(), {pixel.blue, pixel.green, pixel.red});
    }
  }
  auto mark = std::make_unique<CBitmap>();
  mark->Attach(os::CreateDIBitmap(os::GetDC(nullptr), header, rows, {}));
  return mark;
}

}  // namespace

void RegisterStatusMarks() {
  CShowParam::SetRecordBmp(MakeMark(RecordPixel).release());
  CShowParam::SetAudioBmp(MakeMark(SoundPixel).release());
  CShowParam::SetAlarmBmp(MakeMark(AlarmPixel).release());
}

}  // namespace zebtool
