#include "platform/os/clock.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/framework/time.h"

namespace {

TEST(SteppedClock, MovesBothHandsTogetherAndWrapsTheTicksAlone) {
  os::SteppedClock clock(1000, std::numeric_limits<DWORD>::max() - 1);
  clock.Advance(999);
  EXPECT_EQ(CurrentClock().WallSeconds(), 1000U);
  clock.Advance(4001);
  EXPECT_EQ(os::GetTickCount(), 4998U);
  EXPECT_EQ(CTime::GetCurrentTime(), CTime(1005));
  constexpr ULONGLONG kFiftyDaysMs = ULONGLONG{50} * 24 * 3600 * 1000;
  clock.MoveTo(kFiftyDaysMs);
  EXPECT_EQ(CurrentClock().WallSeconds(), 1000U + 50 * 24 * 3600);
}

TEST(MachineClock, IsInForceAgainOnceTheSteppedOneIsGone) {
  const DWORD before = os::GetTickCount();
  {
    const os::SteppedClock clock(7, before + 1000000);
    EXPECT_EQ(CurrentClock().WallSeconds(), 7U);
  }
  EXPECT_LT(os::GetTickCount() - before, 1000000U);
  EXPECT_GT(CurrentClock().WallSeconds(), 1600000000U);
}

}  // namespace
