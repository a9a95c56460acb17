#include "platform/os/graphics/pixels.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
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

// Pixels `m_begin` to `m_end` - 1 of the source make one pixel of the target.
struct Span {
  LONG m_begin = 0;
  LONG m_end = 0;
  bool operator==(const Span&) const = default;
};

// The part of a target axis that is visible, and the source pixels of each place on it.
struct Axis {
  LONG m_first = 0;
  std::vector<Span> m_spans;  // empty spans lie outside the source
};

Axis MapAxis(LONG onto, LONG onto_size, LONG target_size, LONG from, LONG from_size,
             LONG source_size) {
  const std::int64_t first = std::max<std::int64_t>(onto, 0);
  const std::int64_t end = std::min<std::int64_t>(std::int64_t{onto} + onto_size, target_size);
  Axis axis;
  axis.m_first = static_cast<LONG>(first);
  for (std::int64_t place = first; place < end; ++place) {
    const std::int64_t step = place - onto;
    const std::int64_t begin = from + step * from_size / onto_size;
    const std::int64_t until = std::max(begin + 1, from + (step + 1) * from_size / onto_size);
    const std::int64_t clipped_begin = std::clamp<std::int64_t>(begin, 0, source_size);
    const std::int64_t clipped_end = std::clamp<std::int64_t>(until, clipped_begin, source_size);
    axis.m_spans.push_back({static_cast<LONG>(clipped_begin), static_cast<LONG>(clipped_end)});
  }
  return axis;
}

// Gathers the source pixels of one pixel of the target.
class PixelMixer {
 public:
  void Add(Color color) {
    m_and &= color;
    m_blue += color & 0xFF;
    m_green += (color >> 8) & 0xFF;
    m_red += (color >> 16) & 0xFF;
    ++m_count;
  }
  Color Mixed(StretchMode mode) const {
    if (mode == StretchMode::kBlackOnWhite) return m_and;
    const auto mean = [this](ULONGLONG sum) {
      return static_cast<Color>((sum + m_count / 2) / m_count);
    };
    return (mean(m_red) << 16) | (mean(m_green) << 8) | mean(m_blue);
  }

 private:
  Color m_and = kColorMask;
  ULONGLONG m_blue = 0;
  ULONGLONG m_green = 0;
  ULONGLONG m_red = 0;
  ULONGLONG m_count = 0;
};

// The places of the visible axis that have source pixels: they lie side by side.
std::pair<std::size_t, std::size_t> CoveredPlaces(const Axis& axis) {
  const auto is_covered = [](const Span& span) { return span.m_begin < span.m_end; };
  const auto first = std::find_if(axis.m_spans.begin(), axis.m_spans.end(), is_covered);
  const auto end = std::find_if_not(first, axis.m_spans.end(), is_covered);
  return {static_cast<std::size_t>(first - axis.m_spans.begin()),
          static_cast<std::size_t>(end - axis.m_spans.begin())};
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
  layout.m_pitch_bytes = RowBytes(static_cast<DWORD>(width * header.m_bit_count));
  layout.m_top_down = header.m_height < 0;
  if (static_cast<ULONGLONG>(layout.m_height) > kMaxBytes / layout.m_pitch_bytes) {
    return std::nullopt;
  }
  return layout;
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
  const int bit_count = m_layout.m_bit_count;
  if (bit_count <= kByteBits) {
    LONG column = from;
    for (Color& pixel : pixels) {
      const DWORD index = PaletteIndex(bytes, column++, bit_count);
      pixel = index < m_colors.size() ? m_colors[index] : 0;
    }
    return;
  }
  const auto pixel_bytes = static_cast<std::size_t>(bit_count / kByteBits);
  const BYTE* at = bytes.data() + pixel_bytes * static_cast<std::size_t>(from);
  for (Color& pixel : pixels) {
    const DWORD low = at[0] | (DWORD{at[1]} << 8);
    pixel = bit_count == 16 ? ExpandFiveBits(low) : low | (DWORD{at[2]} << 16);
    at += pixel_bytes;
  }
}

void PixelTarget::WriteRow(LONG row, LONG from, std::span<const Color> pixels) const {
  const auto bytes = m_bytes.subspan(m_layout.RowOffset(row), m_layout.m_pitch_bytes);
  const int bit_count = m_layout.m_bit_count;
  if (bit_count <= kByteBits) {
    LONG column = from;
    for (const Color pixel : pixels) {
      PutPaletteIndex(bytes, column++, bit_count, NearestIndex(m_colors, pixel));
    }
    return;
  }
  const auto pixel_bytes = static_cast<std::size_t>(bit_count / kByteBits);
  BYTE* at = bytes.data() + pixel_bytes * static_cast<std::size_t>(from);
  for (const Color pixel : pixels) {
    const DWORD value = bit_count == 16 ? PackFiveBits(pixel) : pixel & kColorMask;
    for (std::size_t i = 0; i < pixel_bytes; ++i) {
      at[i] = static_cast<BYTE>((value >> (kByteBits * i)) & 0xFF);
    }
    at += pixel_bytes;
  }
}

void StretchPixels(const PixelSource& source, const Area& from, const PixelTarget& target,
                   const Area& onto, StretchMode mode) {
  if (from.m_width == 0 || from.m_height == 0) return;
  const Axis rows = MapAxis(onto.m_y, onto.m_height, target.m_layout.m_height, from.m_y,
                            from.m_height, source.m_layout.m_height);
  const Axis columns = MapAxis(onto.m_x, onto.m_width, target.m_layout.m_width, from.m_x,
                               from.m_width, source.m_layout.m_width);
  const auto [first_column, end_column] = CoveredPlaces(columns);
  const auto [first_row, end_row] = CoveredPlaces(rows);
  if (first_column == end_column) return;

  const auto spans = std::span(columns.m_spans).subspan(first_column, end_column - first_column);
  const LONG source_left = spans.front().m_begin;
  std::vector<Color> read(static_cast<std::size_t>(spans.back().m_end - source_left));
  std::vector<Color> mixed(spans.size());
  Span mixed_rows;  // the source rows that `mixed` was made of
  for (std::size_t place = first_row; place < end_row; ++place) {
    if (rows.m_spans[place] != mixed_rows) {
      mixed_rows = rows.m_spans[place];
      std::vector<PixelMixer> mixers(spans.size());
      for (LONG row = mixed_rows.m_begin; row < mixed_rows.m_end; ++row) {
        source.ReadRow(row, source_left, read);
        for (std::size_t i = 0; i < spans.size(); ++i) {
          for (LONG column = spans[i].m_begin; column < spans[i].m_end; ++column) {
            mixers[i].Add(read[static_cast<std::size_t>(column - source_left)]);
          }
        }
      }
      std::transform(mixers.begin(), mixers.end(), mixed.begin(),
                     [mode](const PixelMixer& mixer) { return mixer.Mixed(mode); });
    }
    target.WriteRow(rows.m_first + static_cast<LONG>(place),
                    columns.m_first + static_cast<LONG>(first_column), mixed);
  }
}

}  // namespace os
