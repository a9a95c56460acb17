// A day's directory is called "d", year, month and day; its date is the day's local midnight.
#pragma once

#include <optional>
#include <string_view>

#include "platform/framework/time.h"

namespace zebx {

// The midnight at which the local day of `time` began. Where the clocks skip midnight, the day's
// first moment.
CTime MidnightOf(CTime time);

// Such as d20040412, for the local day of `time`.
CString DayDirectoryName(CTime time);

// The date of a bare directory name, 'd' in either case; nothing when it is no day's. A month or
// day out of range is carried over as the calendar does.
std::optional<CTime> ParseDayDirectoryName(std::string_view name);

}  // namespace zebx
