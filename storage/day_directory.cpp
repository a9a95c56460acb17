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

// How much later than in Greenwich the clocks show it is.
LONGLONG OffsetAt(LONGLONG seconds) {
  return SecondsShown(CTime(static_cast<DWORD>(seconds)).GetLocalTm()) - seconds;
}

// The first moment of the day whose midnight is shown as `shown`, wherever the clocks stand around
// it: they may skip midnight, or show it twice.
CTime FirstMomentOf(LONGLONG shown) {
  constexpr LONGLONG kFarthestOffset = 26 * LONGLONG{kSecondsPerHour};
  const auto has_begun = [shown](LONGLONG seconds) { return seconds + OffsetAt(seconds) >= shown; };
  // The clocks may fall back behind midnight once they have shown it, for some hours at most.
  constexpr LONGLONG kStep = kSecondsPerHour / 4;
  LONGLONG before = shown - kFarthestOffset;
  while (!has_begun(before + kStep)) before += kStep;
  LONGLONG begun = before + kStep;
  while (begun - before > 1) {
    const LONGLONG middle = (before + begun) / 2;
    (has_begun(middle) ? begun : before) = middle;
  }
  return CTime(static_cast<DWORD>(begun));
}

// The first moment of a date; nothing when it is none, or too near to the ends of 32 bits.
std::optional<CTime> FirstMomentOf(int year, int month, int day) {
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  constexpr int kFirstYear = 1971;
  constexpr int kLastYear = 2105;
  if (!date.ok() || year < kFirstYear || year > kLastYear) return std::nullopt;
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  const LONGLONG shown = SecondsShown(fields);
  // As a rule the clocks are not changed from some hours before midnight to it. A disk has
  // thousands of days, and asking the calendar for each makes it look for a new time zone every
  // time.
  constexpr LONGLONG kHours = 6 * LONGLONG{kSecondsPerHour};
  const LONGLONG midnight = shown - OffsetAt(shown);
  const bool is_plain =
      midnight + OffsetAt(midnight) == shown && OffsetAt(midnight - kHours) == OffsetAt(midnight);
  return is_plain ? CTime(static_cast<DWORD>(midnight)) : FirstMomentOf(shown);
}

CTime Midnight(int year, int month, int day) {
  const auto midnight = FirstMomentOf(year, month, day);
  return midnight ? *midnight : CTime(year, month, day, 0, 0, 0);
}

}  // namespace

CTime MidnightOf(CTime time) {
  const std::tm fields = time.GetLocalTm();
  return Midnight(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday);
}

LONGLONG SignedMidnightOf(CTime time) {
  const std::tm fields = time.GetLocalTm();
  const LONGLONG since_midnight =
      fields.tm_hour * LONGLONG{kSecondsPerHour} + fields.tm_min * LONGLONG{60} + fields.tm_sec;
  if (time.GetTime() < since_midnight) return time.GetTime() - since_midnight;
  return static_cast<LONG>(MidnightOf(time).GetTime());
}

CString DayDirectoryName(CTime time) {
  return time.Format("d%Y%m%d");
}

bool IsDayDirectoryName(std::string_view name) {
  return name.size() == kNameChars && (name[0] == 'd' || name[0] == 'D') &&
         std::all_of(name.begin() + kYearAt, name.end(), IsDigit);
}

std::optional<CTime> ParseDayDirectoryName(std::string_view name) {
  if (!IsDayDirectoryName(name)) return std::nullopt;
  return Midnight(NumberOf(name.substr(kYearAt, kMonthAt - kYearAt)),
                  NumberOf(name.substr(kMonthAt, kDayAt - kMonthAt)),
                  NumberOf(name.substr(kDayAt)));
}

}  // namespace zebx
