// How the channels of the virtual devices run: what drives them, what they see, and what happens to
// them. For tests and tools; any thread may call. Devices and channels are named by their numbers,
// and a setting holds from SetDevicePlan, which resets it, whether the device is created or not.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/zebdev/software/channel_source.h"

namespace zebx::zebdev {

enum class Drive {
  kPaced,    // every running channel has a thread of its own and keeps to its frame rate
  kStepped,  // frames come from StepChannel only
};

// Holds for channels that are started from now on; paced to begin with.
ZEBX_API void SetDrive(Drive drive);

// Makes one frame of a running stepped channel, with everything that belongs to it (live frame,
// live sound, faces, live picture with its caption), on the calling thread. Time goes on by a frame
// period; stamps are of the clock in force. 1, or 0 when no such channel runs and while it makes
// another frame, as inside its callback.
ZEBX_API int StepChannel(DWORD device, DWORD channel);

// What a channel sees from its next start on. Without one it is `camera<N>.y4m` of the device
// directory, with the sound of `camera<N>.wav`, where that exists, else a generated street. N
// counts the channels of all devices of the plan, so camera0 is the first channel of the first
// device. A film that cannot be read is reported, and nothing is seen. The library's calls for
// a channel never overlap: each channel needs a source of its own.
ZEBX_API void SetSource(DWORD device, DWORD channel, std::shared_ptr<ChannelSource> source);

// Takes the channel its picture, or gives it back, from the next frame on.
ZEBX_API void LoseVideo(DWORD device, DWORD channel, bool is_lost);

// Lets the channel find so many faces in its next frame: the source's own where it knows as many,
// else parts of the picture.
ZEBX_API void ShowFaces(DWORD device, DWORD channel, DWORD faces);

// Receives the live sound of channels whose preview audio is on, 8000 samples a second, on the
// channel's thread; noxdevChStop waits for it as for a callback. Null for none.
using LiveSound = void (*)(void* user, DWORD device, DWORD channel,
                           std::span<const std::int16_t> samples);
ZEBX_API void SetLiveSound(LiveSound sink, void* user);

// Calls what was given to noxdevChStart with these arguments, whether they make sense or not, on
// the calling thread; noxdevChStop waits for it. Nothing for a channel that does not run.
ZEBX_API std::optional<int> CallChannel(DWORD device, DWORD channel, DWORD type,
                                        std::uintptr_t first, std::uintptr_t second, void* packet);

}  // namespace zebx::zebdev
