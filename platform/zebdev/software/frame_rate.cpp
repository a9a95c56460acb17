#include "platform/zebdev/software/frame_rate.h"

#include <numeric>

namespace zebx::zebdev {
namespace {

constexpr DWORD kMsPerSecond = 1000;
constexpr DWORD kMaxPart = 1 << 24;
constexpr DWORD kSecondsPerMinute = 60;

// number * units / count, where only the product of the rest has to fit 64 bits.
ULONGLONG InProportion(ULONGLONG number, ULONGLONG units, ULONGLONG count) {
  return number / count * units + number % count * units / count;
}

}  // namespace

FrameRate FrameRate::Reduced() const {
  const DWORD divisor = std::gcd(frames, seconds);
  return {frames / divisor, seconds / divisor};
}

bool FrameRate::IsUsable() const {
  return frames <= kMaxPart && seconds <= kMaxPart &&
         ULONGLONG{frames} * kSecondsPerMinute >= seconds &&
         frames <= ULONGLONG{seconds} * kMsPerSecond;
}

ULONGLONG FrameRate::Begin(ULONGLONG number, DWORD units_per_second) const {
  return InProportion(number, ULONGLONG{seconds} * units_per_second, frames);
}

ULONGLONG FrameRate::NumberAt(ULONGLONG time_ms) const {
  return InProportion(time_ms, frames, ULONGLONG{seconds} * kMsPerSecond);
}

}  // namespace zebx::zebdev
