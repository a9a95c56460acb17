#include "platform/framework/time.h"

#include <gtest/gtest.h>

#include "tests/support/scoped_time_zone.h"

namespace {

constexpr const char* kFormat = "%Y-%m-%d %H:%M:%S";

// POSIX zone rules, so that no zone database is needed.
TEST(CTime, TellsLocalAndUniversalTimeOfOneMoment) {
  const struct {
    const char* m_zone;
    DWORD m_seconds;
    const char *m_local, *m_gmt;
  } cases[] = {
      {"EST5EDT,M3.2.0,M11.1.0", 1700000000, "2023-11-14 17:13:20", "2023-11-14 22:13:20"},
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1711846799, "2024-03-31 01:59:59", "2024-03-31 00:59:59"},
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1711846800, "2024-03-31 03:00:00", "2024-03-31 01:00:00"},
      {"UTC0", 0xFFFFFFFF, "2106-02-07 06:28:15", "2106-02-07 06:28:15"},
  };
  for (const auto& [zone, seconds, local, gmt] : cases) {
    SCOPED_TRACE(local);
    const ScopedTimeZone scoped(zone);
    const CTime moment(seconds);
    EXPECT_EQ(moment.Format(kFormat), local);
    EXPECT_EQ(moment.FormatGmt(kFormat), gmt);
    EXPECT_EQ(CTime(moment.GetYear(), moment.GetMonth(), moment.GetDay(), moment.GetHour(),
                    moment.GetMinute(), moment.GetSecond()),
              moment);
  }
}

TEST(CTime, SpansThe32BitsOfSeconds) {
  const ScopedTimeZone scoped("UTC0");
  EXPECT_EQ(CTime(2106, 2, 7, 6, 28, 20).GetTime(), 0U);
  EXPECT_EQ(CTime(1969, 12, 31, 23, 59, 59).GetTime(), 0U);
  EXPECT_EQ((CTime(0xFFFFFFFF) + 2).GetTime(), 1U);
  EXPECT_EQ((CTime(1) - 2).GetTime(), 0xFFFFFFFF);
  EXPECT_LT(CTime(1), CTime(0xFFFFFFFF));
}

}  // namespace
