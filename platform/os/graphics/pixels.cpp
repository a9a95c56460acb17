#include "platform/os/graphics/pixels.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace os {

namespace {

constexpr int kByteBits = 8;

// Five bits a colour, the usual form of 16-bit pixels.
Color ExpandFiveBits(DWORD pixel) {
  const auto expand = [pixel](int shift) {
    const DWORD five_bits = (pixel >> shift) & 0x1F;
    return (five_bits << 3) | (five_bits >> 2);
  };
  return (expand(10) << 16) | (expand(5) << 8) | expand(0);
}

DWORD PackFiveBits(Color color) {
  return ((color >> 9) & 0x7C00) | ((color >> 6) & 0x03E0) | ((color >> 3) & 0x001F);
}

// Pixels below 8 bits lie in their byte from the high bits down.
int ShiftInByte(LONG column, int bit_count) {
  const int per_byte = kByteBits / bit_count;
  return (per_byte - 1 - column % per_byte) * bit_count;
}

DWORD PaletteIndex(std::span<const BYTE> row, LONG column, int bit_count) {
  const BYTE byte = row[static_cast<std::size_t>(column / (kByteBits / bit_count))];
  return (static_cast<DWORD>(byte) >> ShiftInByte(column, bit_count)) & ((1U << bit_count) - 1);
}

void PutPaletteIndex(std::span<BYTE> row, LONG column, int bit_count, DWORD index) {
  BYTE& byte = row[static_cast<std::size_t>(column / (kByteBits / bit_count))];
  const int shift = ShiftInByte(column, bit_count);
  const DWORD mask = ((1U << bit_count) - 1) << shift;
  byte = static_cast<BYTE>((byte & ~mask) | (index << shift));
}

DWORD NearestIndex(std::span<const Color> colors, Color wanted) {
  int best_distance = std::numeric_limits<int>::max();
  DWORD best = 0;
  for (std::size_t i = 0; i < colors.size(); ++i) {
    int distance = 0;
    for (const int shift : {0, 8, 16}) {
      const int difference = static_cast<int>((colors[i] >> shift) & 0xFF) -
                             static_cast<int>((wanted >> shift) & 0xFF);
      distance += difference * difference;
    }
    if (distance < best_distance) {
      best_distance = distance;
      best = static_cast<DWORD>(i);
    }
  }
  return best;
}

void Store(BYTE* at, Color color) {
  std::memcpy(at, &color, sizeof(color));
}

constexpr std::size_t kTripleBytes = 3;

// Pixels of 24 bits into pixels of 32. Each but the last is loaded with a byte of the next.
void ExpandTriples(const BYTE* from, BYTE* to, std::size_t count) {
  if (count == 0) return;
  const std::size_t last = count - 1;
  for (std::size_t i = 0; i < last; ++i) {
    Store(to + sizeof(Color) * i, LoadColor(from + kTripleBytes * i));
  }
  Color color = 0;
  std::memcpy(&color, from + kTripleBytes * last, kTripleBytes);
  Store(to + sizeof(Color) * last, color);
}

// Pixels of 32 bits into pixels of 24, four into three words at a time.
void PackTriples(const BYTE* from, BYTE* to, std::size_t count) {
  std::size_t i = 0;
  for (; i + 4 <= count; i += 4) {
    const BYTE* const four = from + sizeof(Color) * i;
    BYTE* const packed = to + kTripleBytes * i;
    const Color second = LoadColor(four + 4), third = LoadColor(four + 8);
    Store(packed, LoadColor(four) | (second << 24));
    Store(packed + 4, (second >> 8) | (third << 16));
    Store(packed + 8, (third >> 16) | (LoadColor(four + 12) << 8));
  }
  for (; i < count; ++i) {
    std::memcpy(to + kTripleBytes * i, from + sizeof(Color) * i, kTripleBytes);
  }
}

void CopyWords(const BYTE* from, BYTE* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    Store(to + sizeof(Color) * i, LoadColor(from + sizeof(Color) * i));
  }
}

}  // namespace

std::optional<PixelLayout> PixelLayout::Of(const BitmapInfoHeader& header) {
  constexpr std::array<WORD, 6> kBitCounts = {1, 4, 8, 16, 24, 32};
  if (header.m_compression != kUncompressed || header.m_width <= 0 || header.m_height == 0 ||
      header.m_height == std::numeric_limits<LONG>::min() ||
      std::find(kBitCounts.begin(), kBitCounts.end(), header.m_bit_count) == kBitCounts.end()) {
    return std::nullopt;
  }
  const auto width = static_cast<ULONGLONG>(header.m_width);
  if (width > kMaxBytes / kColorBytes) return std::nullopt;
  PixelLayout layout;
  layout.m_width = header.m_width;
  layout.m_height = std::abs(header.m_height);
  layout.m_bit_count = header.m_bit_count;
  layout.m_pitch_bytes = RowBytes(width * header.m_bit_count);
  layout.m_top_down = header.m_height < 0;
  if (static_cast<ULONGLONG>(layout.m_height) > kMaxBytes / layout.m_pitch_bytes) {
    return std::nullopt;
  }
  return layout;
}

PixelLayout PixelLayout::OfWords(CSize size) {
  return {size.cx, size.cy, 8 * sizeof(Color), static_cast<std::size_t>(size.cx) * sizeof(Color),
          true};
}

std::vector<Color> ParseColorTable(std::span<const BYTE> table, WORD bit_count) {
  if (bit_count > kByteBits) return {};
  const std::size_t count = std::min(table.size() / kColorBytes, std::size_t{1} << bit_count);
  std::vector<Color> colors;
  colors.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto entry = table.subspan(i * kColorBytes, kColorBytes);
    colors.push_back((Color{entry[2]} << 16) | (Color{entry[1]} << 8) | entry[0]);
  }
  return colors;
}

void PixelSource::ReadRow(LONG row, LONG from, std::span<Color> pixels) const {
  const auto bytes = m_bytes.subspan(m_layout.RowOffset(row), m_layout.m_pitch_bytes);
  const BYTE* const at = bytes.data() + m_layout.PixelOffset(from);
  switch (m_layout.m_bit_count) {
    case 32:
      CopyWords(at, reinterpret_cast<BYTE*>(pixels.data()), pixels.size());
      break;
    case 24:
      ExpandTriples(at, reinterpret_cast<BYTE*>(pixels.data()), pixels.size());
      break;
    case 16:
      for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = ExpandFiveBits(at[2 * i] | (DWORD{at[2 * i + 1]} << 8));
      }
      break;
    default:
      for (Color& pixel : pixels) {
        const DWORD index = PaletteIndex(bytes, from++, m_layout.m_bit_count);
        pixel = index < m_colors.size() ? m_colors[index] : 0;
      }
  }
}

void PixelTarget::WriteRow(LONG row, LONG from, std::span<const Color> pixels) const {
  const auto bytes = m_bytes.subspan(m_layout.RowOffset(row), m_layout.m_pitch_bytes);
  BYTE* const at = bytes.data() + m_layout.PixelOffset(from);
  switch (m_layout.m_bit_count) {
    case 32:
      std::memcpy(at, pixels.data(), pixels.size_bytes());
      break;
    case 24:
      PackTriples(reinterpret_cast<const BYTE*>(pixels.data()), at, pixels.size());
      break;
    case 16:
      for (std::size_t i = 0; i < pixels.size(); ++i) {
        const DWORD packed = PackFiveBits(pixels[i]);
        at[2 * i] = static_cast<BYTE>(packed & 0xFF);
        at[2 * i + 1] = static_cast<BYTE>(packed >> 8);
      }
      break;
    default:
      for (const Color pixel : pixels) {
        PutPaletteIndex(bytes, from++, m_layout.m_bit_count, NearestIndex(m_colors, pixel));
      }
  }
}

void CopyPixels(const PixelSource& source, LONG row, LONG from, const PixelTarget& target,
                LONG onto_row, LONG onto, std::size_t count) {
  const BYTE* const read =
      source.m_bytes.data() + source.m_layout.RowOffset(row) + source.m_layout.PixelOffset(from);
  BYTE* const write = target.m_bytes.data() + target.m_layout.RowOffset(onto_row) +
                      target.m_layout.PixelOffset(onto);
  const auto are = [&](int source_bits, int target_bits) {
    return source.m_layout.m_bit_count == source_bits && target.m_layout.m_bit_count == target_bits;
  };
  if (are(32, 32)) return CopyWords(read, write, count);
  if (are(24, 32)) return ExpandTriples(read, write, count);
  if (are(32, 24)) return PackTriples(read, write, count);
  if (are(24, 24)) {
    std::memcpy(write, read, kTripleBytes * count);
    return;
  }
  std::array<Color, 1024> colors;
  while (count > 0) {
    const auto piece = std::span(colors).first(std::min(count, colors.size()));
    source.ReadRow(row, from, piece);
    target.WriteRow(onto_row, onto, piece);
    from += static_cast<LONG>(piece.size());
    onto += static_cast<LONG>(piece.size());
    count -= piece.size();
  }
}

}  // namespace os
