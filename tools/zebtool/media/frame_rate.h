// Frame rates as exact fractions, and the time stamps that belong to them.
#pragma once

#include <optional>
#include <string>

#include "platform/framework/types.h"

namespace zebtool {

inline constexpr DWORD kMsPerSecond = 1000;

// `frames` frames in `seconds` seconds; both positive.
struct FrameRate {
  DWORD frames = 25;
  DWORD seconds = 1;

  FrameRate Reduced() const;
  // From one frame a minute to one a millisecond, the unit of time stamps, and with parts so small
  // that Begin is exact.
  bool IsUsable() const;
  double PerSecond() const { return double{1} * frames / seconds; }
  // When frame `number` begins, in units of 1 / `units_per_second` seconds, rounded down: exact for
  // every frame of a usable rate, so that nothing drifts.
  ULONGLONG Begin(ULONGLONG number, DWORD units_per_second) const;
  std::string ToText() const;
};

// The rate behind time stamps: a well-known rate where one fits, otherwise the mean.
// `span_ms` is the sum of `intervals` intervals between neighbouring frames. 25 without any.
FrameRate RateOfIntervals(ULONGLONG span_ms, ULONGLONG intervals);

}  // namespace zebtool
