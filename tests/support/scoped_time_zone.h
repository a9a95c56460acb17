// The time zone of a test.
#pragma once

#include <cstdlib>
#include <ctime>

// A time zone in force for a scope, as the TZ variable spells it: "UTC", "EST5".
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ScopedTimeZone() {
    unsetenv("TZ");
    tzset();
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;
};
