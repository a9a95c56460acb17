#include "platform/os/graphics/graphics.h"

#include <limits>

#include "tests/support/window_fixture.h"

namespace {

using Colors = std::vector<DWORD>;  // 0x00BBGGRR

constexpr DWORD kRed = 0x0000FF;
constexpr DWORD kGreen = 0x00FF00;
constexpr DWORD kBlue = 0xFF0000;
constexpr DWORD kWhite = 0xFFFFFF;

os::BitmapInfoHeader HeaderOf(LONG width, LONG height, WORD bit_count) {
  os::BitmapInfoHeader header;
  header.m_width = width;
  header.m_height = height;
  header.m_bit_count = bit_count;
  return header;
}

// A memory context with a bitmap in it, black at first.
struct Canvas {
  explicit Canvas(LONG width, WORD bit_count = 32, LONG height = 1)
      : m_bitmap(os::CreateDIBSection(m_dc, HeaderOf(width, -height, bit_count), &m_bits)) {
    os::SelectObject(m_dc, m_bitmap);
  }
  // Of these colours, row after row from the top.
  explicit Canvas(const Colors& colors, LONG height = 1)
      : Canvas(static_cast<LONG>(colors.size()) / height, 32, height) {
    auto at = m_bits.begin();
    for (const DWORD color : colors) {
      for (const int shift : {16, 8, 0, 24}) *at++ = static_cast<BYTE>((color >> shift) & 0xFF);
    }
  }
  ~Canvas() {
    os::DeleteDC(m_dc);
    os::DeleteObject(m_bitmap);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  Colors Pixels() const {
    Colors pixels;
    for (int y = 0; os::GetPixel(m_dc, 0, y) != os::kNoPixel; ++y) {
      for (int x = 0; os::GetPixel(m_dc, x, y) != os::kNoPixel; ++x) {
        pixels.push_back(os::GetPixel(m_dc, x, y));
      }
    }
    return pixels;
  }

  HDC m_dc = os::CreateCompatibleDC(os::GetDC(nullptr));
  std::span<BYTE> m_bits;
  HBITMAP m_bitmap;
};

// Copies from the left ends of the first rows.
int CopyRow(HDC to, int width, HDC from, int source_width) {
  return os::StretchBlt(to, 0, 0, width, 1, from, 0, 0, source_width, 1, os::kSrcCopy);
}

TEST(Graphics, ReadsAndWritesEveryFormOfPixels) {
  const std::vector<BYTE> colors = {0, 0, 255, 0, 0, 255, 0, 0};  // red, green
  const struct {
    WORD m_bit_count;
    std::vector<BYTE> m_red_green;  // a row of two pixels
  } forms[] = {{1, {0x40, 0, 0, 0}},
               {4, {0x01, 0, 0, 0}},
               {8, {0, 1, 0, 0}},
               {16, {0x00, 0x7C, 0xE0, 0x03}},
               {24, {0, 0, 255, 0, 255, 0, 0, 0}},
               {32, {0, 0, 255, 0, 0, 255, 0, 0}}};
  for (const auto& [bit_count, red_green] : forms) {
    SCOPED_TRACE(bit_count);
    std::vector<BYTE> bits(red_green.size());
    bits.insert(bits.end(), red_green.begin(), red_green.end());
    // The second row from the bottom, and the second from the top.
    const Canvas canvas(2);
    for (const LONG height : {2, -2}) {
      EXPECT_EQ(os::StretchDIBits(canvas.m_dc, 0, 0, 2, 1, 0, 1, 2, 1, bits,
                                  HeaderOf(2, height, bit_count), colors, os::kSrcCopy),
                2);
      EXPECT_EQ(canvas.Pixels(), (Colors{kRed, kGreen}));
    }
    const Canvas target(2, bit_count);
    EXPECT_EQ(os::SetDIBColorTable(target.m_dc, 0, colors), bit_count <= 8 ? 2U : 0U);
    EXPECT_EQ(CopyRow(target.m_dc, 2, canvas.m_dc, 2), 1);
    EXPECT_EQ(std::vector<BYTE>(target.m_bits.begin(), target.m_bits.end()), red_green);
  }
}

TEST(Graphics, RepeatsPixelsWhenEnlargingAndCombinesThemWhenShrinking) {
  const Canvas source(Colors{kRed, kWhite, kBlue, kGreen});
  const Canvas larger(8);
  CopyRow(larger.m_dc, 8, source.m_dc, 4);
  EXPECT_EQ(larger.Pixels(), (Colors{kRed, kRed, kWhite, kWhite, kBlue, kBlue, kGreen, kGreen}));
  const Canvas smaller(2);
  CopyRow(smaller.m_dc, 2, source.m_dc, 4);
  EXPECT_EQ(smaller.Pixels(), (Colors{kRed, 0})) << "ANDed by default";
  os::SetStretchBltMode(smaller.m_dc, os::StretchMode::kHalftone);
  CopyRow(smaller.m_dc, 2, source.m_dc, 4);
  EXPECT_EQ(smaller.Pixels(), (Colors{0x8080FF, 0x808000})) << "averaged";
}

TEST(Graphics, LeavesOutWhatLiesOutsideEitherPicture) {
  constexpr int kFar = std::numeric_limits<int>::max();
  const Colors background(3, kBlue);
  const struct {
    int m_x, m_width, m_source_x, m_source_width;
    Colors m_row;
  } cases[] = {
      {-1, 2, 0, 2, {kGreen, kBlue, kBlue}},
      {0, 3, -1, 3, {kBlue, kRed, kGreen}},
      {0, 3, 1, 3, {kGreen, kBlue, kBlue}},
      {0, 0, 0, 2, background},
      {0, 3, 0, 0, background},
      {-kFar, kFar, kFar, kFar, background},
      {0, kFar, 0, 2, {kRed, kRed, kRed}},
      {0, 1, 0, kFar, {0, kBlue, kBlue}},
  };
  const Canvas source(Colors{kRed, kGreen});
  for (const auto& [x, width, source_x, source_width, row] : cases) {
    const Canvas target(background);
    EXPECT_EQ(os::StretchBlt(target.m_dc, x, 0, width, 1, source.m_dc, source_x, 0, source_width, 1,
                             os::kSrcCopy),
              1);
    EXPECT_EQ(target.Pixels(), row) << x << ' ' << width << ' ' << source_x << ' ' << source_width;
  }
}

TEST(Graphics, RefusesWhatCannotBeDrawn) {
  const Canvas canvas(2);
  HDC stale = os::CreateCompatibleDC(canvas.m_dc);
  os::DeleteDC(stale);
  EXPECT_EQ(CopyRow(canvas.m_dc, -2, canvas.m_dc, 2), 0);
  EXPECT_EQ(CopyRow(canvas.m_dc, 2, canvas.m_dc, -2), 0);
  for (HDC unusable : {os::GetDC(nullptr), stale}) {
    EXPECT_EQ(CopyRow(unusable, 2, canvas.m_dc, 2), 0);
    EXPECT_EQ(CopyRow(canvas.m_dc, 2, unusable, 2), 0);
  }

  constexpr LONG kMax = std::numeric_limits<LONG>::max();
  constexpr LONG kMin = std::numeric_limits<LONG>::min();
  os::BitmapInfoHeader compressed = HeaderOf(1, 1, 24);
  compressed.m_compression = 1;
  const std::vector<BYTE> bits(8 * 2 - 1);  // one byte short of the last ones
  for (const auto& header :
       {compressed, HeaderOf(0, 1, 24), HeaderOf(1, 0, 24), HeaderOf(kMax, 1, 24),
        HeaderOf(kMax, kMax, 1), HeaderOf(1, kMin, 1), HeaderOf(2, 2, 0), HeaderOf(2, 2, 24)}) {
    EXPECT_EQ(os::CreateDIBitmap(canvas.m_dc, header, bits, {}), nullptr);
    EXPECT_EQ(
        os::StretchDIBits(canvas.m_dc, 0, 0, 1, 1, 0, 0, 1, 1, bits, header, {}, os::kSrcCopy),
        os::kGdiError);
  }
}

TEST(Graphics, KeepsABitmapInOneContextAndFromBeingDeletedMeanwhile) {
  const Canvas canvas(1);
  HDC other = os::CreateCompatibleDC(canvas.m_dc);
  EXPECT_EQ(os::SelectObject(other, canvas.m_bitmap), nullptr);
  EXPECT_EQ(os::GetPixel(other, 0, 0), os::kNoPixel);
  EXPECT_EQ(os::DeleteObject(canvas.m_bitmap), 0);
  EXPECT_EQ(os::SelectObject(canvas.m_dc, nullptr), canvas.m_bitmap);
  EXPECT_EQ(os::SelectObject(other, canvas.m_bitmap), nullptr);
  EXPECT_EQ(os::GetPixel(other, 0, 0), 0U);
  EXPECT_EQ(os::DeleteDC(other), 1);
}

class WindowContext : public WindowTest {};

TEST_F(WindowContext, DrawsIntoTheWindowsPictureUntilTheWindowGoes) {
  HWND window = Make(AddParameters, nullptr, {10, 10, 11, 13});
  HDC dc = os::GetDC(window);
  HDC second = os::GetDC(window);
  const Canvas canvas(Colors{kRed, kGreen, kBlue}, 3);
  const auto copy = [](HDC to, int y, HDC from, int height) {
    return os::StretchBlt(to, 0, y, 1, height, from, 0, 0, 1, height, os::kSrcCopy);
  };
  EXPECT_EQ(copy(dc, 0, canvas.m_dc, 3), 1);
  // A picture is copied within itself as it was before.
  EXPECT_EQ(copy(dc, 1, second, 2), 1);
  EXPECT_EQ(copy(canvas.m_dc, 1, canvas.m_dc, 2), 1);
  EXPECT_EQ(canvas.Pixels(), (Colors{kRed, kRed, kGreen}));
  for (int y = 0; y < 3; ++y) {
    EXPECT_EQ(os::GetPixel(second, 0, y), os::GetPixel(canvas.m_dc, 0, y));
  }
  EXPECT_EQ(os::ReleaseDC(window, second), 1);
  EXPECT_EQ(os::ReleaseDC(window, second), 0);

  os::DestroyWindow(window);
  EXPECT_EQ(copy(dc, 0, canvas.m_dc, 3), 0);
  EXPECT_EQ(os::ReleaseDC(window, dc), 1);
}

TEST(Graphics, MakesAndGivesBackHandlesOnAnyThread) {
  const auto draw = [] {
    for (int i = 0; i < 100; ++i) EXPECT_EQ(Canvas(Colors{kRed}).Pixels(), Colors{kRed});
  };
  std::thread other(draw);
  draw();
  other.join();
}

}  // namespace
