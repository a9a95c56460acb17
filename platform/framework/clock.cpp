#include "platform/framework/clock.h"

#include <atomic>
#include <chrono>

namespace zebx {

namespace {

class MachineClock final : public Clock {
 public:
  DWORD TickMs() const override {
    const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(
        std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
  }

  DWORD WallSeconds() const override {
    const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::seconds>(since_1970).count());
  }
};

const MachineClock kMachineClock;
std::atomic<const Clock*> current_clock = &kMachineClock;

}  // namespace

Clock::~Clock() = default;

const Clock& CurrentClock() {
  return *current_clock.load(std::memory_order_acquire);
}

void SetClock(const Clock* clock) {
  current_clock.store(clock != nullptr ? clock : &kMachineClock, std::memory_order_release);
}

}  // namespace zebx
