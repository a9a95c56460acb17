// The one rule about time stamps in a recording: they never go back from a frame to the next.
#pragma once

#include "platform/framework/types.h"

namespace zebx {

// Stamps wrap at 2^32, so "back" is the nearer half of the circle.
inline bool GoesBack(DWORD ahead, DWORD behind) {
  return static_cast<LONG>(behind - ahead) < 0;
}

}  // namespace zebx
