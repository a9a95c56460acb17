// What windows show, as a picture.
#pragma once

#include <span>

#include "image/image.h"
#include "platform/framework/geometry.h"
#include "platform/framework/types.h"

namespace zebtool {

// A screen of that size with what the windows show now.
CImage PictureOfScreen(CSize screen, std::span<const HWND> windows);

}  // namespace zebtool
