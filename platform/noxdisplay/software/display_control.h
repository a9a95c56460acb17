// What tests and tools see and do behind the display library's door.
#pragma once

#include <optional>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx::noxdisplay {

// Takes the display's surfaces away, as a switch of the screen's mode does: noxshowIsLost answers
// non-zero until noxshowRestore. Any thread may call.
ZEBX_API void LoseSurfaces();

// The watermark in force: 24-bit rows padded to a multiple of 4 bytes, the bottom row first.
struct Watermark {
  DWORD m_width = 0;
  DWORD m_height = 0;
  std::vector<BYTE> m_pixels;
};

// Nothing when none was ever set. Any thread may call.
ZEBX_API std::optional<Watermark> CurrentWatermark();

}  // namespace zebx::noxdisplay
