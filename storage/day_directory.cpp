#include "storage/day_directory.h"

#include <algorithm>

namespace {

constexpr std::size_t kNameChars = 9;
constexpr std::size_t kYearAt = 1;
constexpr std::size_t kMonthAt = 5;
constexpr std::size_t kDayAt = 7;

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

int NumberOf(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) number = number * 10 + (digit - '0');
  return number;
}

}  // namespace

CTime MidnightOf(CTime time) {
  return CTime(time.GetYear(), time.GetMonth(), time.GetDay(), 0, 0, 0);
}

CString DayDirectoryName(CTime time) {
  return time.Format("d%Y%m%d");
}

std::optional<CTime> ParseDayDirectoryName(std::string_view name) {
  if (name.size() != kNameChars || (name[0] != 'd' && name[0] != 'D') ||
      !std::all_of(name.begin() + kYearAt, name.end(), IsDigit)) {
    return std::nullopt;
  }
  return CTime(NumberOf(name.substr(kYearAt, kMonthAt - kYearAt)),
               NumberOf(name.substr(kMonthAt, kDayAt - kMonthAt)), NumberOf(name.substr(kDayAt)), 0,
               0, 0);
}
