#include "platform/os/clock.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(SteppedClock, MovesBothHandsTogetherAndOnlyWhenTold) {
  os::SteppedClock clock(1000, 500);
  EXPECT_EQ(os::GetTickCount(), 500U);
  clock.Advance(999);
  EXPECT_EQ(os::GetTickCount(), 1499U);
  EXPECT_EQ(CurrentClock().WallSeconds(), 1000U);
  clock.Advance(1);
  EXPECT_EQ(CurrentClock().WallSeconds(), 1001U);
  clock.MoveTo(10);
  EXPECT_EQ(os::GetTickCount(), 510U);
  EXPECT_EQ(CurrentClock().WallSeconds(), 1000U);
}

TEST(SteppedClock, WrapsItsTicksButNotItsSeconds) {
  os::SteppedClock clock(1000, std::numeric_limits<DWORD>::max() - 1);
  const DWORD before = os::GetTickCount();
  clock.Advance(5000);
  EXPECT_EQ(os::GetTickCount(), 4998U);
  EXPECT_EQ(os::GetTickCount() - before, 5000U);
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
