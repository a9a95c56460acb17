// How the library tells the host about its cameras.
#pragma once

#include "platform/framework/types.h"

// The codes that reach the host's callback, and their arguments.
enum : DWORD {
  // A frame of an open camera: 0, and the address of its CVideoData. It is the camera's own, holds
  // until the callback returns, and the next frame overwrites it: copy what is to stay.
  ZEBX_MSG_FRAME = 0x465,
  // Faces seen by a camera of an open board, open or not: their number, and the address of an array
  // of so many CMoxFace*. Array and faces are the host's from now on: delete each, then delete[]
  // the
  // array. A face of an empty record has no picture.
  ZEBX_MSG_FACES = 0x467,
};

// The host's callback. `user_data` is what the host gave with it; what the two arguments are
// depends on the code. It is called on threads of the device library, at any moment between
// zebxInitZebx and zebxCloseZebx, for one camera once at a time. Inside it the host may call every
// function of zebx.h, also those that close the very camera, its board or the library, if no other
// thread calls for the same camera, or opens or closes boards, meanwhile. What it answers is not
// looked at. It must not throw.
using ZEBX_NOTIFY_PROC = DWORD (*)(DWORD code, std::uintptr_t user_data, std::uintptr_t first,
                                   std::uintptr_t second);

namespace zebx {

// What notifying answers when no host has registered a callback.
inline constexpr DWORD kNotNotified = 0xFFFFFFFF;

}  // namespace zebx
