// Frame rates as exact fractions.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx::zebdev {

// `frames` frames in `seconds` seconds; both positive.
struct ZEBX_API FrameRate {
  DWORD frames = 25;
  DWORD seconds = 1;

  FrameRate Reduced() const;
  // From one frame a minute to one a millisecond, the unit of time stamps, and with parts so small
  // that the operations below are exact.
  bool IsUsable() const;
  double PerSecond() const { return double{1} * frames / seconds; }
  // When frame `number` begins, in units of 1 / `units_per_second` seconds, rounded down: exact for
  // every frame of a usable rate, so that nothing drifts.
  ULONGLONG Begin(ULONGLONG number, DWORD units_per_second) const;
  // The number of the last frame that has begun by then.
  ULONGLONG NumberAt(ULONGLONG time_ms) const;
};

}  // namespace zebx::zebdev
