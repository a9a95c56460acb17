#include "platform/framework/time.h"

#include <limits>

#include "platform/framework/clock.h"

using namespace zebx;

namespace {

CString FormatFields(const char* format, const std::tm& fields) {
  char text[256];
  return {text, std::strftime(text, sizeof text, format, &fields)};
}

}  // namespace

CTime::CTime(int year, int month, int day, int hour, int minute, int second) {
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = -1;  // let the calendar decide
  const std::time_t seconds = std::mktime(&fields);
  if (seconds >= 0 && seconds <= std::numeric_limits<DWORD>::max()) {
    m_seconds = static_cast<DWORD>(seconds);
  }
}

CTime CTime::GetCurrentTime() {
  return CTime(CurrentClock().WallSeconds());
}

std::tm CTime::GetLocalTm() const {
  const std::time_t seconds = m_seconds;
  std::tm fields{};
  localtime_r(&seconds, &fields);
  return fields;
}

std::tm CTime::GetGmtTm() const {
  const std::time_t seconds = m_seconds;
  std::tm fields{};
  gmtime_r(&seconds, &fields);
  return fields;
}

CString CTime::Format(const char* format) const {
  return FormatFields(format, GetLocalTm());
}

CString CTime::FormatGmt(const char* format) const {
  return FormatFields(format, GetGmtTm());
}
