#include "tools/zebtool/media/frame_rate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "tools/zebtool/console/text.h"

namespace zebtool {
namespace {

constexpr std::array<FrameRate, 18> kWellKnownRates = {{{25, 1},
                                                        {30, 1},
                                                        {30000, 1001},
                                                        {25, 2},
                                                        {15, 1},
                                                        {15000, 1001},
                                                        {10, 1},
                                                        {20, 1},
                                                        {15, 2},
                                                        {25, 4},
                                                        {5, 1},
                                                        {50, 1},
                                                        {60, 1},
                                                        {60000, 1001},
                                                        {24, 1},
                                                        {24000, 1001},
                                                        {2, 1},
                                                        {1, 1}}};

// How far the mean may lie off a well-known rate: capture clocks are not better than this.
constexpr double kRateTolerance = 0.003;

}  // namespace

std::string RateText(const FrameRate& rate) {
  return rate.seconds == 1 ? std::to_string(rate.frames) : FormatDecimals(rate.PerSecond(), 3);
}

FrameRate RateOfIntervals(ULONGLONG span_ms, ULONGLONG intervals) {
  if (span_ms == 0 || intervals == 0) return {};
  const double mean_ms = static_cast<double>(span_ms) / static_cast<double>(intervals);
  const auto deviation = [&](const FrameRate& rate) {
    return std::abs(mean_ms * rate.PerSecond() / kMsPerSecond - 1);
  };
  const auto* const nearest =
      std::min_element(kWellKnownRates.begin(), kWellKnownRates.end(),
                       [&](const auto& a, const auto& b) { return deviation(a) < deviation(b); });
  // Stamps are whole milliseconds, so the span is known to one of them.
  const double rounding = 1.0 / static_cast<double>(span_ms);
  if (deviation(*nearest) <= std::max(kRateTolerance, rounding)) return *nearest;
  const ULONGLONG frames = intervals * kMsPerSecond;
  const ULONGLONG divisor = std::gcd(frames, span_ms);
  return {static_cast<DWORD>(frames / divisor), static_cast<DWORD>(span_ms / divisor)};
}

}  // namespace zebtool
