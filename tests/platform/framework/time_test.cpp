#include "platform/framework/time.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "tests/support/scoped_time_zone.h"

namespace {

// POSIX zone rules, so that no zone database is needed.
constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST(CTime, TellsLocalAndUniversalTimeOfOneMoment) {
  const CTime moment(1700000000);
  const std::pair<const char*, const char*> cases[] = {
      {"UTC0", "2023-11-14 22:13:20"},
      {"EST5EDT,M3.2.0,M11.1.0", "2023-11-14 17:13:20"},
      {kBerlin, "2023-11-14 23:13:20"},
      {"IST-5:30", "2023-11-15 03:43:20"},
      {"NST3:30NDT,M3.2.0,M11.1.0", "2023-11-14 18:43:20"}};
  for (const auto& [zone, local] : cases) {
    const ScopedTimeZone scoped(zone);
    EXPECT_EQ(moment.Format("%Y-%m-%d %H:%M:%S"), local);
    EXPECT_EQ(moment.FormatGmt("%Y-%m-%d %H:%M:%S"), "2023-11-14 22:13:20");
    const CTime again(moment.GetYear(), moment.GetMonth(), moment.GetDay(), moment.GetHour(),
                      moment.GetMinute(), moment.GetSecond());
    EXPECT_EQ(again, moment);
  }
}

TEST(CTime, FollowsDaylightSavingIntoAndOutOfSummer) {
  const ScopedTimeZone scoped(kBerlin);
  const CTime before_summer(2024, 3, 31, 1, 59, 59);
  EXPECT_EQ(before_summer.GetTime(), 1711846799U);
  EXPECT_EQ((before_summer + 1).Format("%H:%M:%S %Z"), "03:00:00 CEST");
  const CTime before_winter(2024, 10, 27, 1, 59, 59);
  EXPECT_EQ((before_winter + 1).Format("%H:%M:%S %Z"), "02:00:00 CEST");
  EXPECT_EQ((before_winter + 3601).Format("%H:%M:%S %Z"), "02:00:00 CET");
  EXPECT_EQ(CTime(2024, 7, 1, 12, 0, 0).FormatGmt("%H:%M"), "10:00");
}

TEST(CTime, SpansThe32BitsOfSeconds) {
  const ScopedTimeZone scoped("UTC0");
  const CTime last(std::numeric_limits<DWORD>::max());
  EXPECT_EQ(last.Format("%Y-%m-%d %H:%M:%S"), "2106-02-07 06:28:15");
  EXPECT_EQ(CTime(2106, 2, 7, 6, 28, 15), last);
  EXPECT_EQ(CTime(2106, 2, 7, 6, 28, 16).GetTime(), 0U);
  EXPECT_EQ(CTime(1969, 12, 31, 23, 59, 59).GetTime(), 0U);
  EXPECT_EQ((last + 2).GetTime(), 1U);
  EXPECT_EQ((CTime(1) - 2), last);
  EXPECT_LT(CTime(1), last);
}

}  // namespace
