// When a disk is full, when it is running short, and when it has room for new recordings. All in
// MB.
#pragma once

#include "platform/framework/types.h"

namespace zebx {

inline constexpr DWORD kDefaultReservedMb = 1000;

// Modulo 2^32, on purpose: a reserved space of all but nothing has a small alarm space.
constexpr DWORD AlarmSpaceOf(DWORD reserved_mb) {
  constexpr DWORD kAlarmAboveReservedMb = 50;
  return reserved_mb + kAlarmAboveReservedMb;
}

// The disk must be recycled or left.
constexpr bool IsFull(DWORD free_mb, DWORD reserved_mb) {
  return free_mb < reserved_mb;
}

// The host is to warn.
constexpr bool IsRunningShort(DWORD free_mb, DWORD alarm_mb) {
  return free_mb < alarm_mb;
}

// A disk that is to take new recordings has more than its alarm space.
constexpr bool HasRoom(DWORD free_mb, DWORD alarm_mb) {
  return free_mb > alarm_mb;
}

}  // namespace zebx
