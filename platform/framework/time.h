// A moment in seconds since 1970, with its calendar fields in local and universal time.
#pragma once

#include <compare>
#include <ctime>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

// A value: copy it freely. Unsigned 32-bit seconds, so it reaches into the year 2106.
class ZEBX_API CTime {
 public:
  CTime() = default;
  explicit CTime(DWORD seconds) : m_seconds(seconds) {}
  // A moment of local time: full year, month 1-12, day 1-31. A time that daylight saving skips is
  // taken as the operating system's calendar takes it; one before 1970 or after 2106 becomes 0.
  CTime(int year, int month, int day, int hour, int minute, int second);

  // The time of day of the clock in force.
  static CTime GetCurrentTime();

  DWORD GetTime() const { return m_seconds; }
  // Calendar fields, in struct tm's own units (years since 1900, months 0-11).
  std::tm GetLocalTm() const;
  std::tm GetGmtTm() const;
  // Local time; full year, month 1-12.
  int GetYear() const { return GetLocalTm().tm_year + 1900; }
  int GetMonth() const { return GetLocalTm().tm_mon + 1; }
  int GetDay() const { return GetLocalTm().tm_mday; }
  int GetHour() const { return GetLocalTm().tm_hour; }
  int GetMinute() const { return GetLocalTm().tm_min; }
  int GetSecond() const { return GetLocalTm().tm_sec; }

  // The moment as text in local or universal time; `format` as strftime takes it, the text at most
  // 255 characters (an empty one when it would be longer).
  CString Format(const char* format) const;
  CString FormatGmt(const char* format) const;

  // Seconds later or earlier, modulo 2^32.
  CTime operator+(DWORD seconds) const { return CTime(m_seconds + seconds); }
  CTime operator-(DWORD seconds) const { return CTime(m_seconds - seconds); }
  // NOLINTNEXTLINE(modernize-use-nullptr,hicpp-use-nullptr): the 0 is of the rewritten comparison
  auto operator<=>(const CTime&) const = default;

 private:
  DWORD m_seconds = 0;
};
