// The off-screen picture of a window, as graphics draws into it.
#pragma once

#include <functional>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/os/pixels.h"

namespace os {

// Lets `use` work on the window's picture, under the lock that guards it: it must not call into
// windows. 1, or 0 with `use` not called for a stale handle.
ZEBX_API int WithWindowPicture(HWND window, const std::function<void(const PixelTarget&)>& use);

}  // namespace os
