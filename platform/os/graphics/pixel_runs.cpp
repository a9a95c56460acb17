#include "platform/os/graphics/pixel_runs.h"

#include <cstring>

namespace os {

namespace {

using FourLanes = std::uint64_t;
static_assert(sizeof(FourLanes) == kLanes * sizeof(Lane));
constexpr FourLanes kColorLanes = 0x0000FFFFFFFFFFFF;

FourLanes LoadLanes(const Lane* at) {
  FourLanes lanes;
  std::memcpy(&lanes, at, sizeof(lanes));
  return lanes;
}

void StoreLanes(Lane* at, FourLanes lanes) {
  std::memcpy(at, &lanes, sizeof(lanes));
}

template <std::size_t kPixelBytes>
void AndWideRuns(const BYTE* row, std::span<const Run> runs, Color* colors) {
  for (std::size_t i = 0; i < runs.size(); ++i) {
    Color color = kColorMask;
    for (std::size_t at = runs[i].m_first; at <= runs[i].m_last; at += kPixelBytes) {
      color &= LoadColor(row + at);
    }
    colors[i] = color;
  }
}

template <std::size_t kPixelBytes>
void AddWideRuns(const Lane* row, std::span<const Run> runs, Lane* sums) {
  for (std::size_t i = 0; i < runs.size(); ++i) {
    FourLanes sum = 0;
    for (std::size_t at = runs[i].m_first; at <= runs[i].m_last; at += kPixelBytes) {
      sum += LoadLanes(row + at);
    }
    StoreLanes(sums + kLanes * i, sum & kColorLanes);
  }
}

// Means of 1 << kShift bytes. A shift that is known vectorises.
template <int kShift>
void ShiftSums(std::span<const Lane> sums, BYTE* means) {
  constexpr Lane kHalf = (1 << kShift) / 2;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    means[i] = static_cast<BYTE>(static_cast<Lane>(sums[i] + kHalf) >> kShift);
  }
}

}  // namespace

void AndRows(std::span<BYTE> to, const BYTE* bytes, const BYTE* more) {
  for (std::size_t i = 0; i < to.size(); ++i) to[i] = bytes[i] & more[i];
}

void AndRow(std::span<BYTE> to, const BYTE* bytes) {
  for (std::size_t i = 0; i < to.size(); ++i) to[i] &= bytes[i];
}

void AndRuns(const BYTE* row, std::size_t pixel_bytes, std::span<const Run> runs, bool is_wide,
             Color* colors) {
  if (is_wide) return (pixel_bytes == 3 ? AndWideRuns<3> : AndWideRuns<4>)(row, runs, colors);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    colors[i] = LoadColor(row + runs[i].m_first) & LoadColor(row + runs[i].m_last);
  }
}

void DoubleRow(const BYTE* row, std::span<Color> colors) {
  Color* const to = colors.data();
  const std::size_t pairs = colors.size() / 2;
  for (std::size_t i = 0; i < pairs; ++i) {
    const Color color = LoadColor(row + sizeof(Color) * i);
    to[2 * i] = color;
    to[2 * i + 1] = color;
  }
  if (colors.size() % 2 != 0) to[2 * pairs] = LoadColor(row + sizeof(Color) * pairs);
}

// Blue and red are summed in one word, with room for the sum between them, and green in another.
void HalveRows(const BYTE* upper, const BYTE* lower, std::span<Color> colors) {
  constexpr Color kBlueRed = 0xFF00FF, kGreen = 0x00FF00;
  Color* const to = colors.data();
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const std::size_t at = 2 * sizeof(Color) * i;
    const Color a = LoadColor(upper + at), b = LoadColor(upper + at + sizeof(Color));
    const Color c = LoadColor(lower + at), d = LoadColor(lower + at + sizeof(Color));
    const Color blue_red =
        (a & kBlueRed) + (b & kBlueRed) + (c & kBlueRed) + (d & kBlueRed) + 0x020002;
    const Color green = (a & kGreen) + (b & kGreen) + (c & kGreen) + (d & kGreen) + 0x000200;
    to[i] = ((blue_red >> 2) & kBlueRed) | ((green >> 2) & kGreen);
  }
}

void AddRows(std::span<Lane> to, const BYTE* bytes, const BYTE* more) {
  for (std::size_t i = 0; i < to.size(); ++i) to[i] = static_cast<Lane>(bytes[i] + more[i]);
}

void AddRow(std::span<Lane> to, const BYTE* bytes) {
  for (std::size_t i = 0; i < to.size(); ++i) to[i] = static_cast<Lane>(to[i] + bytes[i]);
}

void AddRuns(const Lane* row, std::size_t pixel_bytes, std::span<const Run> runs, bool is_wide,
             Lane* sums) {
  if (is_wide) return (pixel_bytes == 3 ? AddWideRuns<3> : AddWideRuns<4>)(row, runs, sums);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const FourLanes sum = LoadLanes(row + runs[i].m_first) + LoadLanes(row + runs[i].m_last);
    StoreLanes(sums + kLanes * i, sum & kColorLanes);
  }
}

void HalveOrQuarterSums(std::span<const Lane> sums, bool quarter, BYTE* means) {
  (quarter ? ShiftSums<2> : ShiftSums<1>)(sums, means);
}

// The product with the reciprocal is right or 1 too small, which the remainder tells.
void DivideSums(std::span<const Lane> sums, const Lane* counts, const Lane* reciprocals,
                BYTE* means) {
  for (std::size_t i = 0; i < sums.size(); ++i) {
    const auto sum = static_cast<Lane>(sums[i] + counts[i] / 2);
    const auto quotient = static_cast<Lane>(DWORD{sum} * reciprocals[i] >> 16);
    const auto rest = static_cast<Lane>(sum - quotient * counts[i]);
    means[i] = static_cast<BYTE>(quotient + (rest >= counts[i] ? 1 : 0));
  }
}

}  // namespace os
