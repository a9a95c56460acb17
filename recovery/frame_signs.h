// By which signs a frame header is recognised where no intact chain leads to it.
#pragma once

#include "record/frame_format.h"

namespace zebx {

// No picture of the sizes that codecs take, and no sound of a frame, needs more.
inline constexpr DWORD kMaxFramePartBytes = 64 << 20;

// Whether the bytes can be a frame header: a type of the device's 8 bits, no unused flags, lengths
// within reason, and something inside.
bool LooksLikeFrame(const FrameHeader& header);

// Whether it is no frame but the block header, or the first bytes of it, that a writer has put
// behind the open block at `block`.
bool IsNewBlock(const FrameHeader& header, ULONGLONG block);

// Whether there is something inside that zeros and small numbers in a row do not make up.
bool HasContents(const FrameHeader& header);

// Whether `later` can be the stamp of a frame some way behind one that is stamped `earlier`: up to
// a day later, or a little earlier where a stamp is damaged.
bool StampsFit(DWORD earlier, DWORD later);

// Whether `later` is most likely the frame right behind `earlier`: it comes from the same encoder,
// seconds later at most.
bool Follows(const FrameHeader& earlier, const FrameHeader& later);

}  // namespace zebx
