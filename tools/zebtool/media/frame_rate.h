// Frame rates for people, and the rates behind time stamps.
#pragma once

#include <string>

#include "platform/framework/types.h"
#include "platform/zebdev/software/frame_rate.h"

namespace zebtool {

inline constexpr DWORD kMsPerSecond = 1000;

using zebx::zebdev::FrameRate;

// Frames a second: "25", "29.970".
std::string RateText(const FrameRate& rate);

// The rate behind time stamps: a well-known rate where one fits, otherwise the mean.
// `span_ms` is the sum of `intervals` intervals between neighbouring frames. 25 without any.
FrameRate RateOfIntervals(ULONGLONG span_ms, ULONGLONG intervals);

}  // namespace zebtool
