// Drawing of one picture onto another, next to copying the bytes of the target, or of the larger
// one when both have the same size.
#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "bench/compare.h"
#include "platform/os/graphics/graphics.h"

namespace {

// A picture on a memory context, with bytes of no pattern.
class Canvas {
 public:
  Canvas(LONG width, LONG height, WORD bit_count)
      : m_dc(os::CreateCompatibleDC(os::GetDC(nullptr))), m_size{width, height} {
    os::BitmapInfoHeader header;
    header.m_width = width;
    header.m_height = height;
    header.m_bit_count = bit_count;
    m_bitmap = os::CreateDIBSection(m_dc, header, &m_bits);
    Require(m_bitmap != nullptr, "no bitmap");
    os::SelectObject(m_dc, m_bitmap);
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp)
    std::minstd_rand random(1);
    for (BYTE& byte : m_bits) byte = static_cast<BYTE>(random() >> 8);
  }
  ~Canvas() {
    os::DeleteDC(m_dc);
    os::DeleteObject(m_bitmap);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  std::span<const BYTE> Bits() const { return m_bits; }

  void Draw(const Canvas& source, os::StretchMode mode) const {
    os::SetStretchBltMode(m_dc, mode);
    Require(os::StretchBlt(m_dc, 0, 0, m_size.cx, m_size.cy, source.m_dc, 0, 0, source.m_size.cx,
                           source.m_size.cy, os::kSrcCopy) == 1,
            "drawing failed");
  }

 private:
  HDC m_dc;
  CSize m_size;
  std::span<BYTE> m_bits;
  HBITMAP m_bitmap;
};

void DrawPicture(benchmark::State& state, const Canvas& source, const Canvas& target,
                 os::StretchMode mode, std::size_t copied_bytes) {
  std::vector<BYTE> from(copied_bytes, 1);
  std::vector<BYTE> to(from.size());
  Compare(
      state, static_cast<double>(from.size()), [&] { target.Draw(source, mode); },
      [&] {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
      });
}

// Bits of a source pixel and of a target pixel.
void DrawSameSize(benchmark::State& state) {
  const Canvas source(704, 576, static_cast<WORD>(state.range(0)));
  const Canvas target(704, 576, static_cast<WORD>(state.range(1)));
  DrawPicture(state, source, target, os::StretchMode::kBlackOnWhite,
              std::max(source.Bits().size(), target.Bits().size()));
}
BENCHMARK(DrawSameSize)
    ->ArgNames({"from", "to"})
    ->ArgsProduct({{32, 24}, {32, 24}})
    ->UseManualTime();

// Bits of a pixel, averaging, and the size of the source: the target has 704 * 576 pixels or, from
// that size, 352 * 288.
void DrawScaled(benchmark::State& state) {
  const auto bit_count = static_cast<WORD>(state.range(0));
  const auto mode =
      state.range(1) != 0 ? os::StretchMode::kHalftone : os::StretchMode::kBlackOnWhite;
  const auto width = static_cast<LONG>(state.range(2));
  const Canvas source(width, width * 9 / 11, bit_count);
  const Canvas target = width == 704 ? Canvas(352, 288, bit_count) : Canvas(704, 576, bit_count);
  DrawPicture(state, source, target, mode, target.Bits().size());
}
BENCHMARK(DrawScaled)
    ->ArgNames({"bits", "mean", "width"})
    ->ArgsProduct({{32, 24}, {0, 1}, {352, 640, 704, 800, 1408}})
    ->UseManualTime();

}  // namespace
