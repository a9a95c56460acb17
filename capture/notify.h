// How the library tells the host about its cameras.
#pragma once

#include "platform/framework/types.h"

// The codes that reach the host's callback.
enum : DWORD {
  ZEBX_MSG_FRAME = 0x465,
  ZEBX_MSG_FACES = 0x467,
};

// The host's callback. `user_data` is what the host gave with it; what the two arguments are
// depends on the code. It is called on threads of the device library, at any moment between
// zebxInitZebx and zebxCloseZebx.
using ZEBX_NOTIFY_PROC = DWORD (*)(DWORD code, std::uintptr_t user_data, std::uintptr_t first,
                                   std::uintptr_t second);

namespace zebx {

// What notifying answers when no host has registered a callback.
inline constexpr DWORD kNotNotified = 0xFFFFFFFF;

}  // namespace zebx
