// What the storage tells the host window.
#pragma once

#include "platform/os/windows/windows.h"

// Sent, not posted, for each day that recycling deleted: wparam 0, lparam the day's local midnight
// in seconds since 1970.
inline constexpr UINT ZEBX_MSG_DATE_DELETED = os::kWmUser + 108;
