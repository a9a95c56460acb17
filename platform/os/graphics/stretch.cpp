#include "platform/os/graphics/stretch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "platform/os/graphics/pixel_runs.h"
#include "platform/os/graphics/stretch_axis.h"

namespace os {

namespace {

// Limits of a strip. Wide enough for the work in front of each row not to be felt, and narrow
// enough for its rows to stay in the nearest cache.
constexpr LONG kStripColumns = 1024;
constexpr LONG kStripSourceColumns = 4096;

// Gathers any number of source pixels of one pixel of the target.
class PixelMixer {
 public:
  // No more than kStripSourceColumns of them.
  void Add(std::span<const Color> colors) {
    DWORD blue = 0, green = 0, red = 0;
    for (const Color color : colors) {
      m_and &= color;
      blue += color & 0xFF;
      green += (color >> 8) & 0xFF;
      red += color >> 16;
    }
    m_blue += blue;
    m_green += green;
    m_red += red;
    m_count += colors.size();
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

// What sums of a number of rows are divided by, for every lane of a strip.
struct Divisors {
  LONG m_rows = 0;  // 0: not made yet
  std::vector<Lane> m_counts;
  std::vector<Lane> m_reciprocals;
};

void CopyUnscaled(const PixelSource& source, const PixelTarget& target, const Axis& rows,
                  const Axis& columns) {
  const std::int64_t count = columns.End() - columns.First();
  for (std::int64_t row = rows.First(); row < rows.End(); ++row) {
    CopyPixels(source, rows.At(row).m_begin, columns.At(columns.First()).m_begin, target,
               static_cast<LONG>(row), static_cast<LONG>(columns.First()),
               static_cast<std::size_t>(count));
  }
}

}  // namespace

// Makes rows of some target columns that lie side by side, as many as a strip may have.
class Stretcher::Strip {
 public:
  // What the next rows are made of; borrowed.
  void Use(const PixelSource& source, StretchMode mode) {
    const std::size_t pixel_bytes = source.m_layout.m_bit_count == 24 ? 3 : 4;
    const bool is_other = source.m_layout.m_bit_count != m_source.m_layout.m_bit_count;
    if (is_other || mode != m_mode) m_axis.reset();
    m_source = source;
    m_mode = mode;
    m_pixel_bytes = pixel_bytes;
  }

  // Takes columns from `first` on, and returns the one behind the last.
  std::int64_t Begin(const Axis& columns, std::int64_t first) {
    if (m_axis == columns && m_first == first) return m_end;
    m_axis.reset();
    m_end = MakeTables(columns, first);
    m_first = first;
    m_axis = columns;
    return m_end;
  }

  // Of the source pixels that one of the target could be made of, those that it is made of.
  Span Taken(Span span) const {
    return m_mode == StretchMode::kDropped ? Span{span.m_begin, span.m_begin + 1} : span;
  }

  // A row of the target out of these rows of the source. Valid until the next.
  std::span<const Color> Mix(Span rows) {
    const bool is_narrow = m_columns.back().m_end <= kStripSourceColumns;
    const bool is_single = m_widest == 1 && rows.Size() == 1;
    if (is_single && m_is_doubled) {
      DoubleRow(ReadRow(rows.m_begin), m_mixed);
    } else if (m_is_halved && rows.Size() == 2 && m_mode == StretchMode::kHalftone) {
      HalveRows(ReadRow(rows.m_begin), ReadRow(rows.m_begin + 1), m_mixed);
    } else if (is_narrow && (is_single || m_mode == StretchMode::kBlackOnWhite)) {
      AndPixels(rows);
    } else if (is_narrow && CanBeSummed(rows)) {
      AveragePixels(rows);
    } else {
      MixManyPixels(rows);
    }
    return m_mixed;
  }

 private:
  std::int64_t MakeTables(const Axis& columns, std::int64_t first) {
    m_left = columns.At(first).m_begin;
    m_columns.clear();
    m_widest = 0;
    std::int64_t column = first;
    for (; column < std::min(columns.End(), first + kStripColumns); ++column) {
      const Span span = Taken(columns.At(column));
      if (column != first && span.m_end - m_left > kStripSourceColumns) break;
      m_columns.push_back({span.m_begin - m_left, span.m_end - m_left});
      m_widest = std::max(m_widest, span.Size());
    }
    m_runs.clear();
    for (const Span& span : m_columns) {
      const auto pixel_bytes = static_cast<DWORD>(m_pixel_bytes);
      m_runs.push_back({static_cast<DWORD>(span.m_begin) * pixel_bytes,
                        static_cast<DWORD>(span.m_end - 1) * pixel_bytes});
    }
    m_is_doubled = m_is_halved = m_source.m_layout.m_bit_count == 32;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const auto place = static_cast<LONG>(i);
      m_is_doubled = m_is_doubled && m_columns[i] == Span{place / 2, place / 2 + 1};
      m_is_halved = m_is_halved && m_columns[i] == Span{2 * place, 2 * place + 2};
    }
    m_mixed.resize(m_columns.size());
    m_read.resize(static_cast<std::size_t>(std::min(m_columns.back().m_end, kStripSourceColumns)));
    for (Divisors& divisors : m_divisors) divisors.m_rows = 0;
    return column;
  }

  bool IsWide() const { return m_widest > 2; }
  bool CanBeSummed(Span rows) const {
    return static_cast<std::size_t>(std::max(m_widest, 2)) *
               static_cast<std::size_t>(rows.Size()) <=
           kMaxSummed;
  }

  bool IsReadInPlace() const { return m_source.m_layout.m_bit_count >= 24; }
  // The strip's pixels in a row of the source, of m_pixel_bytes each. Unless they are read in
  // place, valid until the next.
  const BYTE* ReadRow(LONG row) {
    const PixelLayout& layout = m_source.m_layout;
    if (IsReadInPlace()) {
      return m_source.m_bytes.data() + layout.RowOffset(row) + layout.PixelOffset(m_left);
    }
    m_source.ReadRow(row, m_left, m_read);
    return reinterpret_cast<const BYTE*>(m_read.data());
  }

  // Both row buffers have an element more, as a Run wants.
  void AndPixels(Span rows) {
    const std::size_t bytes = m_read.size() * m_pixel_bytes;
    m_row.resize(bytes + 1);
    const auto row = std::span(m_row).first(bytes);
    LONG next = rows.m_begin + 1;
    if (next < rows.m_end && IsReadInPlace()) {
      AndRows(row, ReadRow(rows.m_begin), ReadRow(next++));
    } else {
      std::memcpy(row.data(), ReadRow(rows.m_begin), bytes);
    }
    for (; next < rows.m_end; ++next) AndRow(row, ReadRow(next));
    AndRuns(m_row.data(), m_pixel_bytes, m_runs, IsWide(), m_mixed.data());
  }

  void AveragePixels(Span rows) {
    const std::size_t bytes = m_read.size() * m_pixel_bytes;
    m_row_sums.resize(bytes + 1);
    const auto sums = std::span(m_row_sums).first(bytes);
    LONG row = rows.m_begin;
    if (rows.Size() > 1 && IsReadInPlace()) {
      AddRows(sums, ReadRow(row), ReadRow(row + 1));
      row += 2;
    } else {
      std::ranges::fill(sums, Lane{0});
    }
    for (; row < rows.m_end; ++row) AddRow(sums, ReadRow(row));
    m_sums.resize(m_columns.size() * kLanes);
    AddRuns(m_row_sums.data(), m_pixel_bytes, m_runs, IsWide(), m_sums.data());

    auto* const means = reinterpret_cast<BYTE*>(m_mixed.data());
    if (!IsWide() && rows.Size() <= 2) {
      HalveOrQuarterSums(m_sums, rows.Size() == 2, means);
    } else {
      const Divisors& divisors = DivisorsFor(rows.Size());
      DivideSums(m_sums, divisors.m_counts.data(), divisors.m_reciprocals.data(), means);
    }
  }

  const Divisors& DivisorsFor(LONG rows) {
    Divisors& divisors = m_divisors[static_cast<std::size_t>(rows % 2)];
    if (divisors.m_rows == rows) return divisors;
    divisors.m_rows = 0;  // so that running out of memory leaves none that are cut
    divisors.m_counts.clear();
    divisors.m_reciprocals.clear();
    for (const Span& span : m_columns) {
      const LONG count = rows * (IsWide() ? span.Size() : 2);
      divisors.m_counts.insert(divisors.m_counts.end(), kLanes, static_cast<Lane>(count));
      divisors.m_reciprocals.insert(divisors.m_reciprocals.end(), kLanes,
                                    static_cast<Lane>(0xFFFF / count));
    }
    divisors.m_rows = rows;
    return divisors;
  }

  void MixManyPixels(Span rows) {
    m_mixers.assign(m_columns.size(), {});
    for (LONG row = rows.m_begin; row < rows.m_end; ++row) {
      std::size_t first = 0;
      for (LONG piece = 0; piece < m_columns.back().m_end; piece += kStripSourceColumns) {
        const LONG end = std::min(piece + kStripSourceColumns, m_columns.back().m_end);
        const auto read = std::span(m_read).first(static_cast<std::size_t>(end - piece));
        m_source.ReadRow(row, m_left + piece, read);
        while (m_columns[first].m_end <= piece) ++first;
        for (std::size_t i = first; i < m_columns.size() && m_columns[i].m_begin < end; ++i) {
          const auto from = static_cast<std::size_t>(std::max(m_columns[i].m_begin, piece) - piece);
          const auto until = static_cast<std::size_t>(std::min(m_columns[i].m_end, end) - piece);
          m_mixers[i].Add(read.subspan(from, until - from));
        }
      }
    }
    std::ranges::transform(m_mixers, m_mixed.begin(),
                           [this](const PixelMixer& mixer) { return mixer.Mixed(m_mode); });
  }

  PixelSource m_source;
  StretchMode m_mode = StretchMode::kBlackOnWhite;
  std::size_t m_pixel_bytes = 0;
  std::optional<Axis> m_axis;  // whose columns from m_first to m_end - 1 the tables are for
  std::int64_t m_first = 0;
  std::int64_t m_end = 0;
  LONG m_left = 0;              // of the source columns
  LONG m_widest = 0;            // of m_columns
  std::vector<Span> m_columns;  // counted from m_left
  bool m_is_doubled = false;    // every column twice
  bool m_is_halved = false;     // two columns for each
  std::vector<Run> m_runs;      // of m_columns
  std::vector<Color> m_read;
  std::vector<BYTE> m_row;
  std::vector<Lane> m_row_sums;
  std::vector<Lane> m_sums;
  std::array<Divisors, 2> m_divisors;  // of an even number of rows, and of an odd one
  std::vector<PixelMixer> m_mixers;
  std::vector<Color> m_mixed;
};

Stretcher::Stretcher() = default;
Stretcher::~Stretcher() = default;

void Stretcher::Stretch(const PixelSource& source, const Area& from, const PixelTarget& target,
                        const Area& onto, StretchMode mode) {
  if (from.m_width == 0 || from.m_height == 0 || onto.m_width == 0 || onto.m_height == 0) return;
  const Axis rows(onto.m_y, onto.m_height, target.m_layout.m_height, from.m_y, from.m_height,
                  source.m_layout.m_height);
  const Axis columns(onto.m_x, onto.m_width, target.m_layout.m_width, from.m_x, from.m_width,
                     source.m_layout.m_width);
  if (columns.First() >= columns.End()) return;
  if (rows.IsUnscaled() && columns.IsUnscaled()) {
    CopyUnscaled(source, target, rows, columns);
    return;
  }
  if (m_strip == nullptr) m_strip = std::make_unique<Strip>();
  Strip& strip = *m_strip;
  strip.Use(source, mode);
  for (std::int64_t column = columns.First(); column < columns.End();) {
    const std::int64_t end = strip.Begin(columns, column);
    std::span<const Color> mixed;
    Span mixed_rows;  // the source rows that `mixed` was made of
    for (std::int64_t row = rows.First(); row < rows.End(); ++row) {
      const Span source_rows = strip.Taken(rows.At(row));
      if (source_rows != mixed_rows) mixed = strip.Mix(source_rows);
      mixed_rows = source_rows;
      target.WriteRow(static_cast<LONG>(row), static_cast<LONG>(column), mixed);
    }
    column = end;
  }
}

void StretchPixels(const PixelSource& source, const Area& from, const PixelTarget& target,
                   const Area& onto, StretchMode mode) {
  Stretcher().Stretch(source, from, target, onto, mode);
}

}  // namespace os
