// By which signs a frame header or a block header is recognised where no intact chain leads to it.
#pragma once

#include "record/block_format.h"
#include "record/frame_format.h"

namespace zebtool {

// No picture of the sizes that codecs take, and no sound of a frame, needs more.
inline constexpr DWORD kMaxFramePartBytes = 64 << 20;

// Whether the bytes can be a frame header: a type of the device's 8 bits, no unused flags, lengths
// within reason, and something inside.
bool LooksLikeFrame(const zebx::FrameHeader& header);

// Whether `later` can be the stamp of a frame some way behind one that is stamped `earlier`: up to
// a day later, or a little earlier where the frames of an alarm were put together.
bool StampsFit(DWORD earlier, DWORD later);

}  // namespace zebtool
