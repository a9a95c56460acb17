// Frame sizes and video standards, and the picture sizes that belong to each frame size: fixed
// tables that need no initialised library. Any thread may call.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

// A frame size: 0 to 8 for NTSC, 128 to 136 for PAL.
enum tag_FRAMESIZE : DWORD {};

namespace zebx {

inline constexpr DWORD kFirstNtscFrameSize = 0;
inline constexpr DWORD kFirstPalFrameSize = 128;
inline constexpr DWORD kFrameSizesOfStandard = 9;

}  // namespace zebx

enum tag_VIDEOSTANDARD : DWORD { kVideoStandardNtsc = 0, kVideoStandardPal = 1 };

namespace zebx {

inline constexpr DWORD kNoVideoStandard = 0xFFFFFFFF;

}  // namespace zebx

extern "C" {

// The video standard of a frame size; kNoVideoStandard for any other value.
ZEBX_API DWORD zebxGetVideoStd(DWORD frame_size);

// Picture sizes in pixels: of a shown picture, of the compressed stream, and of the picture that
// the stream decoder makes of a frame. 1, or 0 with the outputs untouched for any other value.
ZEBX_API int zebxGetShowSize(DWORD frame_size, DWORD* width, DWORD* height);
ZEBX_API int zebxGetEncodeSize(DWORD frame_size, DWORD* width, DWORD* height);
ZEBX_API int zebxGetCaptureSize(DWORD frame_size, DWORD* width, DWORD* height);
}
