#include "platform/os/graphics/graphics.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <random>

#include "platform/framework/bitmap.h"
#include "platform/os/graphics/stretch.h"
#include "tests/support/canvas.h"
#include "tests/support/window_fixture.h"

namespace {

constexpr DWORD kRed = 0x0000FF;
constexpr DWORD kGreen = 0x00FF00;
constexpr int kFar = std::numeric_limits<int>::max();

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
    EXPECT_EQ(os::StretchBlt(target.m_dc, 0, 0, 2, 1, canvas.m_dc, 0, 0, 2, 1, os::kSrcCopy), 1);
    EXPECT_EQ(std::vector<BYTE>(target.m_bits.begin(), target.m_bits.end()), red_green);
  }
}

// One direction of an area, and the pixels of a source that make the one at a place of it.
struct Side {
  int m_begin, m_size;

  bool Has(int place) const { return place >= m_begin && std::int64_t{place} - m_begin < m_size; }
  std::array<std::int64_t, 2> SourceOf(int place, const Side& from, int size) const {
    const std::int64_t step = std::int64_t{place} - m_begin;
    const std::int64_t begin = from.m_begin + step * from.m_size / m_size;
    const std::int64_t end = from.m_begin + (step + 1) * from.m_size / m_size;
    return {std::max<std::int64_t>(begin, 0),
            std::min<std::int64_t>(std::max(begin + 1, end), from.m_size == 0 ? 0 : size)};
  }
};

DWORD Combined(const Colors& colors, os::StretchMode mode) {
  DWORD all = 0xFFFFFF, mean = 0;
  if (mode == os::StretchMode::kDropped) return colors.front();
  for (const DWORD color : colors) all &= color;
  for (const int shift : {0, 8, 16}) {
    std::size_t sum = colors.size() / 2;
    for (const DWORD color : colors) sum += (color >> shift) & 0xFF;
    mean |= static_cast<DWORD>(sum / colors.size()) << shift;
  }
  return mode == os::StretchMode::kBlackOnWhite ? all : mean;
}

os::Area AreaOf(const std::array<Side, 2>& sides) {
  return {sides[0].m_begin, sides[1].m_begin, sides[0].m_size, sides[1].m_size};
}

TEST(Graphics, StretchesAsIfEachPixelWereMadeByItself) {
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp)
  std::minstd_rand random(1);
  const auto pick = [&](int low, int high) {
    return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
  };
  os::Stretcher kept;
  for (int round = 0; round < 400; ++round) {
    // Some are wide, so that they are made in pieces or of very many pixels.
    const std::array<int, 2> size = {pick(1, round % 10 == 0 ? 6000 : 24), pick(1, 24)};
    std::array<int, 2> drawn = {pick(1, round % 20 == 0 ? 3000 : 24), pick(1, 24)};
    // And many twice or half as large, which has loops of its own.
    if (round % 4 == 1) drawn = {2 * size[0] - pick(0, 1), 2 * size[1]};
    if (round % 4 == 2) drawn = {(size[0] + 1) / 2, (size[1] + 1) / 2};
    const auto source_bits = static_cast<WORD>(8 * pick(2, 4));
    const auto target_bits = static_cast<WORD>(8 * pick(3, 4));
    const Canvas source(size[0], source_bits, size[1]);
    const Canvas target(drawn[0], target_bits, drawn[1]);
    for (BYTE& byte : source.m_bits) byte = static_cast<BYTE>(pick(0, 255));
    const auto mode = static_cast<os::StretchMode>(pick(0, 2));
    std::array<Side, 2> from{}, onto{};
    for (const std::size_t i : {0U, 1U}) {
      from[i] = {0, size[i]};
      onto[i] = {0, drawn[i]};
      if (pick(0, 2) == 0) from[i] = {pick(-9, 9), pick(0, 9) == 0 ? kFar : pick(0, 30)};
      if (pick(0, 2) == 0) onto[i] = {pick(-9, 9), pick(0, 9) == 0 ? kFar : pick(0, 30)};
      if (pick(0, 2) == 0) onto[i].m_size = from[i].m_size;
    }

    const Colors pixels = source.Pixels();
    Colors expected = target.Pixels();
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const int x = static_cast<int>(i) % drawn[0], y = static_cast<int>(i) / drawn[0];
      if (!onto[0].Has(x) || !onto[1].Has(y)) continue;
      const auto [left, right] = onto[0].SourceOf(x, from[0], size[0]);
      const auto [top, bottom] = onto[1].SourceOf(y, from[1], size[1]);
      Colors box;
      for (auto at = top; left < right && at < bottom; ++at) {
        const auto row = pixels.begin() + at * size[0];
        box.insert(box.end(), row + left, row + right);
      }
      if (!box.empty()) expected[i] = Combined(box, mode);
    }
    const auto read = os::PixelLayout::Of(HeaderOf(size[0], -size[1], source_bits));
    const auto written = os::PixelLayout::Of(HeaderOf(drawn[0], -drawn[1], target_bits));
    for (const char* tables : {"of another round", "of this one"}) {
      kept.Stretch({*read, source.m_bits, {}}, AreaOf(from), {*written, target.m_bits, {}},
                   AreaOf(onto), mode);
      EXPECT_TRUE(target.Pixels() == expected) << "round " << round << " from tables " << tables;
    }
  }
}

TEST(Graphics, RefusesPicturesThatLeadBeyondTheirBytes) {
  const Canvas canvas(2);
  const std::vector<BYTE> bits(8 * 2 - 1);  // one byte short of the last one
  os::BitmapInfoHeader compressed = HeaderOf(1, 1, 24);
  compressed.m_compression = 1;
  EXPECT_EQ(os::DeleteObject(canvas.m_bitmap), 0) << "it is drawn into";
  for (const auto& header : {compressed, HeaderOf(0x8000000, 2, 32), HeaderOf(kFar, kFar, 1),
                             HeaderOf(1, -kFar - 1, 1), HeaderOf(2, 2, 0), HeaderOf(2, 2, 24)}) {
    EXPECT_EQ(os::CreateDIBitmap(canvas.m_dc, header, bits, {}), nullptr);
    EXPECT_EQ(
        os::StretchDIBits(canvas.m_dc, 0, 0, 1, 1, 0, 0, 1, 1, bits, header, {}, os::kSrcCopy),
        os::kGdiError);
  }
  EXPECT_EQ(os::StretchBlt(canvas.m_dc, 0, 0, -2, 1, canvas.m_dc, 0, 0, 2, 1, os::kSrcCopy), 0);
  Colors words(1);
  EXPECT_EQ(os::GetBitmapPixels(canvas.m_bitmap, words), 0);
}

TEST(Graphics, DeletesASelectedBitmapWhenItsContextLetsItGo) {
  const Canvas canvas(1), other(1);
  CBitmap owner;
  owner.Attach(canvas.m_bitmap);
  EXPECT_EQ(owner.DeleteObject(), 1);
  EXPECT_EQ(os::DeleteObjectWhenFree(canvas.m_bitmap), 0) << "it is deleted already";
  canvas.m_bits[0] = 7;
  EXPECT_EQ(os::StretchBlt(other.m_dc, 0, 0, 1, 1, canvas.m_dc, 0, 0, 1, 1, os::kSrcCopy), 1);
  EXPECT_EQ(other.Pixels(), Colors{0x070000}) << "blue comes first in a bitmap";
  EXPECT_EQ(os::SelectObject(canvas.m_dc, nullptr), nullptr) << "a stale handle comes back";
  EXPECT_EQ(os::GetPixel(canvas.m_dc, 0, 0), os::kNoPixel);
}

class WindowContext : public WindowTest {};

TEST_F(WindowContext, DrawsIntoTheWindowsPictureUntilTheWindowGoes) {
  HWND window = Make(AddParameters, nullptr, {10, 10, 11, 13});
  HDC dc = os::GetDC(window);
  const Canvas canvas(1, 32, 3);
  canvas.m_bits[2] = canvas.m_bits[5] = 255;  // red, green, black
  const auto copy = [](HDC to, int y, HDC from, int height) {
    return os::StretchBlt(to, 0, y, 1, height, from, 0, 0, 1, height, os::kSrcCopy);
  };
  EXPECT_EQ(copy(dc, 0, canvas.m_dc, 3), 1);
  // A picture is copied within itself as it was before.
  EXPECT_EQ(copy(dc, 1, os::GetDC(window), 2), 1);
  EXPECT_EQ(copy(canvas.m_dc, 1, canvas.m_dc, 2), 1);
  EXPECT_EQ(canvas.Pixels(), (Colors{kRed, kRed, kGreen}));
  for (int y = 0; y < 3; ++y) {
    EXPECT_EQ(os::GetPixel(dc, 0, y), os::GetPixel(canvas.m_dc, 0, y));
  }
  os::DestroyWindow(window);
  EXPECT_EQ(copy(dc, 0, canvas.m_dc, 3), 0);
  EXPECT_EQ(os::ReleaseDC(window, dc), 1);
  EXPECT_EQ(os::ReleaseDC(window, dc), 0);
}

}  // namespace
