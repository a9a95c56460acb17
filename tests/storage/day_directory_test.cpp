#include "storage/day_directory.h"

#include "tests/support/disk_fixture.h"

using namespace zebx;

namespace {

TEST(DayDirectory, IsADInEitherCaseAndEightDigitsOfABareName) {
  const ScopedTimeZone zone("UTC");
  constexpr DWORD kNone = 77;
  // 99 December and a month is 9 April 2005; what 32 bits of seconds do not hold is 0.
  const std::pair<const char*, DWORD> kCases[] = {
      {"d20040412", 1081728000}, {"D20040412", 1081728000}, {"d20041399", 1113004800},
      {"d19690101", 0},          {"d21060208", 0},          {"d2004041", kNone},
      {"d200404120", kNone},     {"e20040412", kNone},      {"d-0040412", kNone}};
  for (const auto& [name, expected] : kCases) {
    CTime date(kNone);
    const bool is_day = expected != kNone;
    EXPECT_EQ(Words({CHddObj::IsVideoDir(name), CHddObj::GetVideoDirDate(date, name)}),
              Words({is_day, is_day}));
    EXPECT_EQ(date.GetTime(), expected) << name;
  }
}

// Days of 23 and 25 hours, without a midnight and with two, also by a change of the standard time.
// What recycling deletes is the name made of the date, so it has to be the name that gave the date.
TEST(DayDirectory, NameDateAndMidnightAgreeOnEveryDay) {
  for (const char* zone :
       {"UTC", "America/New_York", "America/Sao_Paulo", "Europe/Berlin", "Africa/Casablanca",
        "Asia/Amman", "Asia/Kathmandu", "Asia/Singapore", "Africa/Monrovia", "Asia/Pyongyang",
        "America/St_Johns", "Antarctica/Casey", "Australia/Lord_Howe", "Pacific/Kiritimati"}) {
    const ScopedTimeZone scope(zone);
    for (DWORD noon = 31579200; noon < 2000000000; noon += 86400) {
      const CTime date = MidnightOf(CTime(noon));
      const CString name = DayDirectoryName(CTime(noon));
      ASSERT_EQ(DayDirectoryName(date), name) << zone;
      ASSERT_EQ(ParseDayDirectoryName(name), date) << zone << ' ' << name;
      ASSERT_NE(DayDirectoryName(date - 1), name) << zone;
    }
  }
}

}  // namespace
