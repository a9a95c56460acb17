// Loops over rows of pixels of three or four bytes that copying at another size is made of. Each is
// plain enough for the compiler to vectorise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/framework/types.h"
#include "platform/os/graphics/pixels.h"

namespace os {

// A sum of bytes of one colour. Pixels summed have four side by side: blue, green, red, and one
// that is 0.
using Lane = std::uint16_t;
inline constexpr std::size_t kLanes = 4;
// So many bytes and half their number fit a lane.
inline constexpr std::size_t kMaxSummed = 256;

// The first and the last pixel of a run, as offsets in a row of bytes or of their sums. Of the last
// one, four bytes or sums can be read, even if a pixel has only three.
struct Run {
  DWORD m_first;
  DWORD m_last;
};

// to = bytes & more, and to = to & bytes, for every byte of `to`.
void AndRows(std::span<BYTE> to, const BYTE* bytes, const BYTE* more);
void AndRow(std::span<BYTE> to, const BYTE* bytes);
// The colour of every run: its pixels ANDed. None is wider than two pixels unless `is_wide`.
void AndRuns(const BYTE* row, std::size_t pixel_bytes, std::span<const Run> runs, bool is_wide,
             Color* colors);

// The most frequent scalings, of pixels of four bytes: every pixel of a row twice, and the rounded
// means of four pixels each of two rows.
void DoubleRow(const BYTE* row, std::span<Color> colors);
void HalveRows(const BYTE* upper, const BYTE* lower, std::span<Color> colors);

// to = bytes + more, and to = to + bytes, for every byte.
void AddRows(std::span<Lane> to, const BYTE* bytes, const BYTE* more);
void AddRow(std::span<Lane> to, const BYTE* bytes);
// The sums of every run of a row of such sums. Unless `is_wide` a single pixel counts twice, so
// that all have the same count.
void AddRuns(const Lane* row, std::size_t pixel_bytes, std::span<const Run> runs, bool is_wide,
             Lane* sums);
// Rounded means of sums of two bytes each, or of four.
void HalveOrQuarterSums(std::span<const Lane> sums, bool quarter, BYTE* means);
// Rounded means of sums of any counts of bytes, given with 0xFFFF / count.
void DivideSums(std::span<const Lane> sums, const Lane* counts, const Lane* reciprocals,
                BYTE* means);

}  // namespace os
