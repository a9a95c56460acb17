// The one clock of the process: a millisecond tick counter and the time of day. Everything that
// asks for either reads it here, so that a replaced clock steps the whole library.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx {

// Both operations may be called from any thread at any time.
class ZEBX_API Clock {
 public:
  virtual ~Clock();
  // Milliseconds of a monotonic counter with an arbitrary start; wraps at 2^32.
  virtual DWORD TickMs() const = 0;
  // The time of day, seconds since 1970 in universal time.
  virtual DWORD WallSeconds() const = 0;
};

// The clock in force: the machine's own unless SetClock replaced it.
ZEBX_API const Clock& CurrentClock();

// Puts `clock` in force, null for the machine's own. Borrowed: it must outlive its use. Meant for
// start-up, tools and tests; not to be called while other threads use the library.
ZEBX_API void SetClock(const Clock* clock);

}  // namespace zebx
