// The device library's channels: set up, started, shown and masked. The library calls none of this
// yet and the virtual devices do not have it, so a device library need not either.
//
// Results are those of zebdev.h. A started channel calls its callback on threads of the device
// library, also while other functions of the door run.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/types.h"
#include "platform/zebdev/zebdev.h"

// What a channel callback is called for. `first`, `second` and `packet` mean:
enum : DWORD {
  // A compressed live frame: device handle, device channel, tag_DEVFRAME with its data.
  kNoxdevLiveFrame = 2,
  // Caption data for the live picture: device handle, draw stream handle, tag_CAPTIONINFO to fill.
  kNoxdevCaptionRequest = 4,
  // A frame of the pre-alarm buffer: the two words of the enumeration, tag_DEVFRAME with its data.
  kNoxdevPreAlarmFrame = 5,
  // Faces found in the picture: device handle, device channel, tag_FACEPACKET with its records.
  kNoxdevFaces = 128,
};

// `context` is what noxdevChStart was given. The packet is the device library's and ends with the
// call. 0, or kNoxdevNotMine for a caption request that does not fit the channel.
using NoxdevChannelProc = int (*)(void* context, DWORD type, std::uintptr_t first,
                                  std::uintptr_t second, void* packet);

inline constexpr int kNoxdevNotMine = -1;

extern "C" {

// Stores the channel's name, a copy.
ZEBX_API int noxdevChSetChannelName(NoxdevHandle device, DWORD channel, const char* name);
// Also while the channel runs.
ZEBX_API int noxdevChSetConfig(NoxdevHandle device, DWORD channel, const tag_CHANNELCONFIG* config);

// From here to noxdevChStop the channel calls `callback`; when noxdevChStop returns, no call is
// under way and none will come. `reserved` is 0.
ZEBX_API int noxdevChStart(NoxdevHandle device, DWORD channel, DWORD reserved,
                           NoxdevChannelProc callback, void* context);
ZEBX_API int noxdevChStop(NoxdevHandle device, DWORD channel);
// Makes the next frame an I-frame.
ZEBX_API int noxdevChRequestIFrame(NoxdevHandle device, DWORD channel);
// Calls the channel's callback with kNoxdevPreAlarmFrame once per frame of the pre-alarm buffer,
// oldest first, on the caller's thread and before returning.
ZEBX_API int noxdevChEnumPreAlarmData(NoxdevHandle device, DWORD channel, std::uintptr_t first,
                                      std::uintptr_t second);

// Shows the live picture in the window, which stays the caller's. `reserved` is 0.
ZEBX_API int noxdevChStartPreviewVideo(NoxdevHandle device, DWORD channel, HWND window,
                                       DWORD reserved);
ZEBX_API int noxdevChStartPreviewAudio(NoxdevHandle device, DWORD channel);
ZEBX_API int noxdevChStopPreviewAudio(NoxdevHandle device, DWORD channel);
// How large a picture the channel previews, on boards that have to share the room: 0, 1 or 2.
ZEBX_API int noxdevChChangeShow(NoxdevHandle device, DWORD channel, DWORD show_type);
// A still picture of the rectangle (0, 0, width, height), in 24-bit BGR pixels, into the
// 3 * width * height bytes at `pixels`. A `row_step_bytes` of -3 * width stores the rows bottom-up
// inside the same buffer. `format` is 1.
ZEBX_API int noxdevChCapturePicture(NoxdevHandle device, DWORD channel, BYTE* pixels,
                                    const CRect* rectangle, LONG row_step_bytes, DWORD format);

// The default colour of the devices of a type bit; `is_ntsc` is 1 for NTSC, else 0.
ZEBX_API int noxdevGetDefaultColor(DWORD device_type, tag_DEVCOLOR* color, int is_ntsc);
ZEBX_API int noxdevChSetVideoColor(NoxdevHandle device, DWORD channel, const tag_DEVCOLOR* color);
ZEBX_API int noxdevChGetVideoColor(NoxdevHandle device, DWORD channel, tag_DEVCOLOR* color);

// Starts looking for motion in one more area.
ZEBX_API int noxdevChAddMaskArea(NoxdevHandle device, DWORD channel, const tag_MASKAREA* area);
// Removes all areas of the channel.
ZEBX_API int noxdevChClearMaskArea(NoxdevHandle device, DWORD channel);
// Motion and alarm in the channel's areas, in the order in which they were added.
ZEBX_API int noxdevChGetMaskInfo(NoxdevHandle device, DWORD channel, tag_MASKSTATE* state);
}
