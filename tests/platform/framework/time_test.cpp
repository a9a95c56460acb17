#include "platform/framework/time.h"

#include <gtest/gtest.h>

#include "tests/support/scoped_time_zone.h"

namespace {

TEST(CTime, SpansThe32BitsOfSeconds) {
  const ScopedTimeZone scoped("UTC0");
  EXPECT_EQ(CTime(2106, 2, 7, 6, 28, 20).GetTime(), 0U);
  EXPECT_EQ(CTime(1969, 12, 31, 23, 59, 59).GetTime(), 0U);
  EXPECT_EQ((CTime(0xFFFFFFFF) + 2).GetTime(), 1U);
  EXPECT_EQ((CTime(1) - 2).GetTime(), 0xFFFFFFFF);
  EXPECT_LT(CTime(1), CTime(0xFFFFFFFF));
}

}  // namespace
