#include "storage/day_directory.h"

#include <algorithm>
#include <chrono>

namespace zebx {

namespace {

constexpr std::size_t kNameChars = 9;
constexpr std::size_t kYearAt = 1;
constexpr std::size_t kMonthAt = 5;
constexpr std::size_t kDayAt = 7;

constexpr DWORD kSecondsPerHour = 3600;

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

int NumberOf(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) number = number * 10 + (digit - '0');
  return number;
}

// The seconds that clocks in Greenwich would have counted when they show these fields.
LONGLONG SecondsShown(const std::tm& fields) {
  using namespace std::chrono;
  const sys_days day = year(fields.tm_year + 1900) / (fields.tm_mon + 1) / fields.tm_mday;
  const auto time = hours(fields.tm_hour) + minutes(fields.tm_min) + seconds(fields.tm_sec);
  return seconds{day.time_since_epoch() + time}.count();
}

// Midnight with the offset from Greenwich that holds nearby; nothing when that is not midnight
// there, or the date is none. A disk has thousands of days, and asking the calendar for each makes
// it look for a new time zone every time.
std::optional<CTime> MidnightNearby(int year, int month, int day) {
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  constexpr int kFirstYear = 1971;  // so that seconds stay above 0 and within 32 bits
  constexpr int kLastYear = 2105;
  if (!date.ok() || year < kFirstYear || year > kLastYear) return std::nullopt;
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  const LONGLONG shown = SecondsShown(fields);
  const LONGLONG offset = SecondsShown(CTime(static_cast<DWORD>(shown)).GetLocalTm()) - shown;
  const CTime midnight(static_cast<DWORD>(shown - offset));
  if (SecondsShown(midnight.GetLocalTm()) != shown) return std::nullopt;
  // Clocks set back from one to midnight show it twice; the day began with the first.
  const CTime hour_before = midnight - kSecondsPerHour;
  return SecondsShown(hour_before.GetLocalTm()) == shown ? hour_before : midnight;
}

CTime Midnight(int year, int month, int day) {
  const auto midnight = MidnightNearby(year, month, day);
  return midnight ? *midnight : CTime(year, month, day, 0, 0, 0);
}

}  // namespace

CTime MidnightOf(CTime time) {
  const std::tm fields = time.GetLocalTm();
  return Midnight(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday);
}

CString DayDirectoryName(CTime time) {
  return time.Format("d%Y%m%d");
}

std::optional<CTime> ParseDayDirectoryName(std::string_view name) {
  if (name.size() != kNameChars || (name[0] != 'd' && name[0] != 'D') ||
      !std::all_of(name.begin() + kYearAt, name.end(), IsDigit)) {
    return std::nullopt;
  }
  return Midnight(NumberOf(name.substr(kYearAt, kMonthAt - kYearAt)),
                  NumberOf(name.substr(kMonthAt, kDayAt - kMonthAt)),
                  NumberOf(name.substr(kDayAt)));
}

}  // namespace zebx
