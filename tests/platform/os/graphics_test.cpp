#include "platform/os/graphics.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <thread>
#include <vector>

#include "platform/framework/bitmap.h"
#include "platform/os/windows.h"

namespace {

constexpr DWORD kRed = 0x0000FF;  // 0x00BBGGRR
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
class Canvas {
 public:
  Canvas(LONG width, LONG height, WORD bit_count = 32)
      : m_dc(os::CreateCompatibleDC(os::GetDC(nullptr))),
        m_bitmap(os::CreateDIBSection(m_dc, HeaderOf(width, height, bit_count), &m_bits)),
        m_width(width),
        m_height(height) {
    os::SelectObject(m_dc, m_bitmap);
  }
  ~Canvas() {
    os::DeleteDC(m_dc);
    os::DeleteObject(m_bitmap);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  HDC Dc() const { return m_dc; }
  HBITMAP Bitmap() const { return m_bitmap; }
  std::span<BYTE> Bits() const { return m_bits; }

  // One row of colours at the top left, 24 bits each.
  void PutRow(std::initializer_list<DWORD> colors) const {
    std::vector<BYTE> row;
    for (const DWORD color : colors) {
      for (const int shift : {16, 8, 0}) row.push_back(static_cast<BYTE>((color >> shift) & 0xFF));
    }
    row.resize(os::RowBytes(static_cast<DWORD>(row.size()) * 8));
    const auto width = static_cast<int>(colors.size());
    os::StretchDIBits(m_dc, 0, 0, width, 1, 0, 0, width, 1, row, HeaderOf(width, 1, 24), {},
                      os::kSrcCopy);
  }
  // All pixels, row after row from the top.
  std::vector<DWORD> Pixels() const {
    std::vector<DWORD> pixels;
    for (int y = 0; y < m_height; ++y) {
      for (int x = 0; x < m_width; ++x) pixels.push_back(os::GetPixel(m_dc, x, y));
    }
    return pixels;
  }

 private:
  std::span<BYTE> m_bits;
  HDC m_dc;
  HBITMAP m_bitmap;
  LONG m_width;
  LONG m_height;
};

const std::vector<BYTE> kTwoColors = {0, 0, 255, 0, 0, 255, 0, 0};  // red, green

struct Form {
  WORD m_bit_count;
  std::vector<BYTE> m_red_green;  // a row of two pixels
};

std::vector<Form> Forms() {
  return {{1, {0x40, 0, 0, 0}},
          {4, {0x01, 0, 0, 0}},
          {8, {0, 1, 0, 0}},
          {16, {0x00, 0x7C, 0xE0, 0x03}},
          {24, {0, 0, 255, 0, 255, 0, 0, 0}},
          {32, {0, 0, 255, 0, 0, 255, 0, 0}}};
}

TEST(StretchDIBits, ReadsEveryFormOfPixels) {
  for (const auto& [bit_count, red_green] : Forms()) {
    // The bottom row is all of the first colour or black.
    std::vector<BYTE> bits(red_green.size());
    bits.insert(bits.end(), red_green.begin(), red_green.end());
    const DWORD bottom = bit_count <= 8 ? kRed : 0;

    const Canvas bottom_up(2, 2);
    EXPECT_EQ(os::StretchDIBits(bottom_up.Dc(), 0, 0, 2, 2, 0, 0, 2, 2, bits,
                                HeaderOf(2, 2, bit_count), kTwoColors, os::kSrcCopy),
              2);
    EXPECT_EQ(bottom_up.Pixels(), (std::vector<DWORD>{kRed, kGreen, bottom, bottom})) << bit_count;

    const Canvas top_down(2, 2);
    os::StretchDIBits(top_down.Dc(), 0, 0, 2, 2, 0, 0, 2, 2, bits, HeaderOf(2, -2, bit_count),
                      kTwoColors, os::kSrcCopy);
    EXPECT_EQ(top_down.Pixels(), (std::vector<DWORD>{bottom, bottom, kRed, kGreen})) << bit_count;
  }
}

TEST(StretchBlt, WritesEveryFormOfPixels) {
  const Canvas source(2, 1);
  source.PutRow({kRed, kGreen});
  for (const auto& [bit_count, red_green] : Forms()) {
    const Canvas target(2, 1, bit_count);
    EXPECT_EQ(os::SetDIBColorTable(target.Dc(), 0, kTwoColors), bit_count <= 8 ? 2U : 0U);
    ASSERT_EQ(os::StretchBlt(target.Dc(), 0, 0, 2, 1, source.Dc(), 0, 0, 2, 1, os::kSrcCopy), 1);
    EXPECT_EQ(std::vector<BYTE>(target.Bits().begin(), target.Bits().end()), red_green)
        << bit_count;
  }
}

TEST(StretchDIBits, CountsSourceRowsFromTheBottomOfABottomUpPicture) {
  const std::vector<BYTE> bits = {0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};  // red, then two green rows
  const Canvas canvas(1, 1);
  const auto draw_row = [&](int row, LONG height) {
    os::StretchDIBits(canvas.Dc(), 0, 0, 1, 1, 0, row, 1, 1, bits, HeaderOf(1, height, 8),
                      kTwoColors, os::kSrcCopy);
    return os::GetPixel(canvas.Dc(), 0, 0);
  };
  EXPECT_EQ(draw_row(0, 3), kRed);
  EXPECT_EQ(draw_row(2, 3), kGreen);
  EXPECT_EQ(draw_row(0, -3), kRed);
  EXPECT_EQ(draw_row(2, -3), kGreen);
}

TEST(StretchBlt, RepeatsPixelsWhenEnlargingAndCombinesThemWhenShrinking) {
  const Canvas source(4, 1);
  source.PutRow({kRed, kWhite, kBlue, kGreen});
  const Canvas larger(8, 2);
  os::StretchBlt(larger.Dc(), 0, 0, 8, 2, source.Dc(), 0, 0, 4, 1, os::kSrcCopy);
  const std::vector<DWORD> twice = {kRed, kRed, kWhite, kWhite, kBlue, kBlue, kGreen, kGreen,
                                    kRed, kRed, kWhite, kWhite, kBlue, kBlue, kGreen, kGreen};
  EXPECT_EQ(larger.Pixels(), twice);

  const Canvas smaller(2, 1);
  os::StretchBlt(smaller.Dc(), 0, 0, 2, 1, source.Dc(), 0, 0, 4, 1, os::kSrcCopy);
  EXPECT_EQ(smaller.Pixels(), (std::vector<DWORD>{kRed, 0})) << "ANDed by default";
  os::SetStretchBltMode(smaller.Dc(), os::StretchMode::kHalftone);
  os::StretchBlt(smaller.Dc(), 0, 0, 2, 1, source.Dc(), 0, 0, 4, 1, os::kSrcCopy);
  EXPECT_EQ(smaller.Pixels(), (std::vector<DWORD>{0x8080FF, 0x808000})) << "averaged";
}

TEST(StretchBlt, LeavesOutWhatLiesOutsideEitherPicture) {
  const Canvas source(2, 1);
  source.PutRow({kRed, kGreen});
  const Canvas target(3, 1);
  const auto draw = [&](int x, int width, int source_x, int source_width) {
    target.PutRow({kBlue, kBlue, kBlue});
    EXPECT_EQ(os::StretchBlt(target.Dc(), x, 0, width, 1, source.Dc(), source_x, 0, source_width, 1,
                             os::kSrcCopy),
              1);
    return target.Pixels();
  };
  using Row = std::vector<DWORD>;
  constexpr int kFar = std::numeric_limits<int>::max();
  EXPECT_EQ(draw(-1, 2, 0, 2), (Row{kGreen, kBlue, kBlue}));
  EXPECT_EQ(draw(2, 2, 0, 2), (Row{kBlue, kBlue, kRed}));
  EXPECT_EQ(draw(0, 3, -1, 3), (Row{kBlue, kRed, kGreen}));
  EXPECT_EQ(draw(0, 3, 1, 3), (Row{kGreen, kBlue, kBlue}));
  EXPECT_EQ(draw(0, 0, 0, 2), (Row{kBlue, kBlue, kBlue}));
  EXPECT_EQ(draw(0, 3, 0, 0), (Row{kBlue, kBlue, kBlue}));
  EXPECT_EQ(draw(kFar, kFar, 0, 2), (Row{kBlue, kBlue, kBlue}));
  EXPECT_EQ(draw(-kFar, kFar, kFar, kFar), (Row{kBlue, kBlue, kBlue}));
  EXPECT_EQ(draw(0, kFar, 0, 2), (Row{kRed, kRed, kRed}));
  EXPECT_EQ(draw(0, 1, 0, kFar), (Row{0, kBlue, kBlue}));
}

TEST(StretchBlt, CopiesWithinOnePictureAsItWasBefore) {
  const Canvas canvas(4, 1);
  canvas.PutRow({kRed, kGreen, kBlue, kWhite});
  os::StretchBlt(canvas.Dc(), 1, 0, 3, 1, canvas.Dc(), 0, 0, 3, 1, os::kSrcCopy);
  EXPECT_EQ(canvas.Pixels(), (std::vector<DWORD>{kRed, kRed, kGreen, kBlue}));
}

TEST(StretchBlt, RefusesWhatCannotBeDrawn) {
  const Canvas canvas(2, 1);
  const HDC screen = os::GetDC(nullptr);
  const HDC empty = os::CreateCompatibleDC(screen);
  const HDC stale = os::CreateCompatibleDC(screen);
  os::DeleteDC(stale);
  constexpr DWORD kSrcInvert = 0x00660046;
  const auto draw = [](HDC to, HDC from, int width, DWORD raster_operation) {
    return os::StretchBlt(to, 0, 0, width, 1, from, 0, 0, 2, 1, raster_operation);
  };
  EXPECT_EQ(draw(canvas.Dc(), canvas.Dc(), -2, os::kSrcCopy), 0);
  EXPECT_EQ(draw(canvas.Dc(), canvas.Dc(), 2, kSrcInvert), 0);
  for (const HDC unusable : {screen, empty, stale, HDC{nullptr}}) {
    EXPECT_EQ(draw(unusable, canvas.Dc(), 2, os::kSrcCopy), 0);
    EXPECT_EQ(draw(canvas.Dc(), unusable, 2, os::kSrcCopy), 0);
  }
  os::DeleteDC(empty);
}

TEST(Dib, IsRefusedWithSizesThatMakeNoSense) {
  constexpr LONG kMax = std::numeric_limits<LONG>::max();
  constexpr LONG kMin = std::numeric_limits<LONG>::min();
  std::vector<os::BitmapInfoHeader> headers = {
      HeaderOf(0, 1, 24),          HeaderOf(1, 0, 24),      HeaderOf(-1, 1, 24),
      HeaderOf(kMax, 1, 24),       HeaderOf(kMax, kMax, 1), HeaderOf(1, kMin, 1),
      HeaderOf(2, 2, 0),           HeaderOf(2, 2, 2),       HeaderOf(2, 2, 64),
      HeaderOf(0x8000, 0x8000, 32)};
  headers.push_back(HeaderOf(1, 1, 24));
  headers.back().m_compression = 1;
  const std::vector<BYTE> bits(64);
  const Canvas canvas(1, 1);
  for (const auto& header : headers) {
    std::span<BYTE> made;
    EXPECT_EQ(os::CreateDIBSection(canvas.Dc(), header, &made), nullptr);
    EXPECT_TRUE(made.empty());
    EXPECT_EQ(os::CreateDIBitmap(canvas.Dc(), header, bits, {}), nullptr);
    EXPECT_EQ(
        os::StretchDIBits(canvas.Dc(), 0, 0, 1, 1, 0, 0, 1, 1, bits, header, {}, os::kSrcCopy),
        os::kGdiError);
  }
  const std::vector<BYTE> one_byte_short(8 * 2 - 1);
  EXPECT_EQ(os::CreateDIBitmap(canvas.Dc(), HeaderOf(2, 2, 24), one_byte_short, {}), nullptr);
}

TEST(SelectObject, KeepsABitmapInOneContextAndFromBeingDeleted) {
  const Canvas canvas(1, 1);
  const HDC other = os::CreateCompatibleDC(canvas.Dc());
  EXPECT_EQ(os::SelectObject(other, canvas.Bitmap()), nullptr);
  EXPECT_EQ(os::GetPixel(other, 0, 0), os::kNoPixel);
  EXPECT_EQ(os::DeleteObject(canvas.Bitmap()), 0);
  EXPECT_EQ(os::SelectObject(canvas.Dc(), nullptr), canvas.Bitmap());
  EXPECT_EQ(os::SelectObject(other, canvas.Bitmap()), nullptr);
  EXPECT_EQ(os::GetPixel(other, 0, 0), 0U);
  EXPECT_EQ(os::DeleteDC(other), 1);
  EXPECT_EQ(os::DeleteObject(canvas.Bitmap()), 1);
  EXPECT_EQ(os::DeleteObject(canvas.Bitmap()), 0);
}

TEST(CBitmap, DeletesTheBitmapItOwns) {
  const std::vector<BYTE> red = {0, 0, 255, 0};
  const HDC screen = os::GetDC(nullptr);
  const HBITMAP handle = os::CreateDIBitmap(screen, HeaderOf(1, 1, 24), red, {});
  CSize size;
  {
    CBitmap bitmap;
    EXPECT_EQ(bitmap.Attach(handle), 1);
    EXPECT_EQ(bitmap.Attach(handle), 0);
    EXPECT_EQ(os::GetBitmapSize(handle, &size), 1);
    EXPECT_EQ(size, (CSize{1, 1}));
  }
  EXPECT_EQ(os::GetBitmapSize(handle, &size), 0);
}

TEST(WindowContext, DrawsIntoTheWindowsPictureUntilTheWindowGoes) {
  const HWND window = os::CreateWindow(nullptr, "canvas", {10, 10, 12, 11},
                                       [](HWND, UINT, WPARAM, LPARAM) { return LRESULT{0}; });
  const HDC dc = os::GetDC(window);
  const Canvas source(2, 1);
  source.PutRow({kRed, kGreen});
  EXPECT_EQ(os::StretchBlt(dc, 0, 0, 2, 1, source.Dc(), 0, 0, 2, 1, os::kSrcCopy), 1);
  const HDC second = os::GetDC(window);
  EXPECT_EQ(os::GetPixel(second, 0, 0), kRed);
  EXPECT_EQ(os::GetPixel(second, 1, 0), kGreen);
  EXPECT_EQ(os::StretchBlt(dc, 1, 0, 1, 1, second, 0, 0, 1, 1, os::kSrcCopy), 1)
      << "a window is copied onto itself";
  EXPECT_EQ(os::GetPixel(second, 1, 0), kRed);
  EXPECT_EQ(os::ReleaseDC(nullptr, second), 0);
  EXPECT_EQ(os::ReleaseDC(window, second), 1);
  EXPECT_EQ(os::ReleaseDC(window, second), 0);

  os::DestroyWindow(window);
  EXPECT_EQ(os::StretchBlt(dc, 0, 0, 2, 1, source.Dc(), 0, 0, 2, 1, os::kSrcCopy), 0);
  EXPECT_EQ(os::GetDC(window), nullptr);
  EXPECT_EQ(os::ReleaseDC(window, dc), 1);
}

TEST(Graphics, MakesAndGivesBackHandlesOnAnyThread) {
  const auto draw = [] {
    for (int i = 0; i < 100; ++i) {
      const Canvas canvas(2, 1);
      canvas.PutRow({kRed, kGreen});
      EXPECT_EQ(canvas.Pixels(), (std::vector<DWORD>{kRed, kGreen}));
    }
  };
  std::thread other(draw);
  draw();
  other.join();
}

}  // namespace
