// The device library's channels: set up, started, shown and masked.
//
// Results and threads are those of zebdev.h. Every function fails for a device that is not open and
// a channel that it does not have. A started channel calls its callback on a thread of the device
// library, one call at a time, also while other functions of the door run.
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

// From here to noxdevChStop the channel calls `callback`, perhaps before this returns. A channel
// that runs is stopped first. `reserved` is 0.
//
// Devices of type 0x800 have a second stream of their last two channels, at half the size: it is
// started as the channel two behind, which is no valid channel otherwise, and shows what the first
// one sees while that runs.
ZEBX_API int noxdevChStart(NoxdevHandle device, DWORD channel, DWORD reserved,
                           NoxdevChannelProc callback, void* context);
// When this returns, no call of the channel is under way and none will come; meanwhile the calling
// thread answers what is sent to its windows. It does not wait where it would be waiting for
// itself: inside a callback of the channel, or of another one whose stop is waited for in a
// callback of this channel. Then calls that are under way go on to their end, and none comes after
// them. A channel that does not run is no failure.
ZEBX_API int noxdevChStop(NoxdevHandle device, DWORD channel);
// Makes the next frame an I-frame. Fails for a channel that does not run.
ZEBX_API int noxdevChRequestIFrame(NoxdevHandle device, DWORD channel);
// Calls the channel's callback with kNoxdevPreAlarmFrame once per frame of the pre-alarm buffer,
// oldest first, on the caller's thread and before returning; live frames may come meanwhile. The
// buffer begins with an I-frame, and a live frame is in it once its callback has returned. Fails
// for a channel that does not run or is stopped meanwhile.
ZEBX_API int noxdevChEnumPreAlarmData(NoxdevHandle device, DWORD channel, std::uintptr_t first,
                                      std::uintptr_t second);

// Shows the live picture of a running channel in the window, which stays the caller's, until the
// channel stops; null for in none. With each picture kNoxdevCaptionRequest comes, and it is shown
// without a caption when the answer is kNoxdevNotMine. `reserved` is 0.
ZEBX_API int noxdevChStartPreviewVideo(NoxdevHandle device, DWORD channel, HWND window,
                                       DWORD reserved);
ZEBX_API int noxdevChStartPreviewAudio(NoxdevHandle device, DWORD channel);
ZEBX_API int noxdevChStopPreviewAudio(NoxdevHandle device, DWORD channel);
// How large a picture the channel previews, on boards that have to share the room: 0 for the size
// it encodes at, 1 for a half, 2 for a quarter.
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

// Starts looking for motion in one more area. Fails for an area that is empty or not wholly within
// the picture, and when there are as many as the device looks at.
ZEBX_API int noxdevChAddMaskArea(NoxdevHandle device, DWORD channel, const tag_MASKAREA* area);
// Removes all areas of the channel.
ZEBX_API int noxdevChClearMaskArea(NoxdevHandle device, DWORD channel);
// Motion and alarm in the channel's areas, in the order in which they were added.
ZEBX_API int noxdevChGetMaskInfo(NoxdevHandle device, DWORD channel, tag_MASKSTATE* state);
}
