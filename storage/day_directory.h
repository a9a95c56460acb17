// A day's directory is called "d", year, month and day; its date is the day's local midnight.
#pragma once

#include <optional>
#include <string_view>

#include "platform/framework/time.h"

namespace zebx {

// The midnight at which the local day of `time` began: the day's first moment, also where the
// clocks skip midnight or show it twice. 0 for a day that began before 1970.
CTime MidnightOf(CTime time);

// The same as a signed number of 32 bits, as days are compared: below 0 for the day that 1970 began
// in, where that was not at midnight, and behind the year 2038.
LONGLONG SignedMidnightOf(CTime time);

// Such as d20040412, for the local day of `time`.
CString DayDirectoryName(CTime time);

// Whether a bare directory name is a day's: 'd' in either case and eight digits.
bool IsDayDirectoryName(std::string_view name);

// Its date; nothing when it is no day's. A month or day out of range is carried over as the
// calendar does.
std::optional<CTime> ParseDayDirectoryName(std::string_view name);

}  // namespace zebx
