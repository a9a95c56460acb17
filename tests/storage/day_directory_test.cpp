#include "storage/day_directory.h"

#include <gtest/gtest.h>

#include "tests/support/recording_fixture.h"

namespace {

TEST(DayDirectory, IsDAndEightDigits) {
  for (const char* name : {"d20040412", "D20040412", "d20041399", "d00000000", "d99999999"}) {
    EXPECT_TRUE(ParseDayDirectoryName(name)) << name;
  }
  for (const char* name : {"", "d", "d2004041", "d200404120", "e20040412", "d2004o412", "d2004 412",
                           "d-0040412", "\\d2004041", "d:\\d20040412", "\\d20040412"}) {
    EXPECT_FALSE(ParseDayDirectoryName(name)) << name;
  }
}

TEST(DayDirectory, DatesAreLocalMidnights) {
  const struct {
    const char* m_zone;
    const char* m_name;
    DWORD m_date;
  } kCases[] = {
      {"UTC", "d20040412", 1081728000},
      {"America/New_York", "d20040412", 1081742400},  // four hours behind
      {"Asia/Kathmandu", "d20040412", 1081707300},    // 5:45 ahead
      {"Pacific/Kiritimati", "d20040412", 1081677600},
      {"Europe/Berlin", "d20240331", 1711839600},      // a day of 23 hours
      {"Europe/Berlin", "d20240401", 1711922400},      // and the one after it
      {"Europe/Berlin", "d20241027", 1729980000},      // a day of 25 hours
      {"Europe/Berlin", "d20241028", 1730070000},      // and the one after it
      {"Australia/Sydney", "d20241006", 1728136800},   // 23 hours, south and east
      {"America/Sao_Paulo", "d20181104", 1541300400},  // there is no midnight: one o'clock
      {"Asia/Amman", "d19950915", 811112400},          // midnight comes twice: the first
      {"UTC", "d20041399", 1113004800},                // 99 December and a month: 9 April 2005
      {"UTC", "d20040230", 1078099200},                // 1 March
      {"UTC", "d20040400", 1080691200},                // 31 March
      {"UTC", "d19690101", 0},
      {"UTC", "d99991231", 0},
  };
  for (const auto& [zone, name, date] : kCases) {
    const ScopedTimeZone scope(zone);
    EXPECT_EQ(ParseDayDirectoryName(name)->GetTime(), date) << zone << ' ' << name;
  }
}

// What recycling deletes is the name made of the date, so it has to be the name that gave the date.
TEST(DayDirectory, NameDateAndMidnightAgreeOnEveryDay) {
  for (const char* zone : {"UTC", "America/Sao_Paulo", "Africa/Casablanca", "Asia/Amman",
                           "Australia/Lord_Howe", "Pacific/Kiritimati"}) {
    const ScopedTimeZone scope(zone);
    for (DWORD noon = 31579200; noon < 2000000000; noon += 86400) {
      const CTime date = MidnightOf(CTime(noon));
      const CString name = DayDirectoryName(CTime(noon));
      ASSERT_EQ(DayDirectoryName(date), name) << zone;
      ASSERT_EQ(ParseDayDirectoryName(name), date) << zone << ' ' << name;
      ASSERT_EQ(CTime(date.GetYear(), date.GetMonth(), date.GetDay(), 0, 0, 0), date) << zone;
    }
  }
}

}  // namespace
