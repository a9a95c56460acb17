// The sources of the virtual devices' channels that are not given by code, and the one that is.
#pragma once

#include <memory>

#include "platform/zebdev/software/channel_source.h"
#include "platform/zebdev/software/channel_state.h"

namespace zebx::zebdev {

// `camera<N>.y4m` of the directory with the sound of `camera<N>.wav`, as far as these files exist,
// else the street of that number. The directory may end with a separator. Null, with the reason
// reported, for a film that cannot be read; a sound that cannot be is reported and left out.
std::shared_ptr<ChannelSource> OpenCamera(const CString& directory, DWORD number);

// The pictures of a channel that runs, as it encodes them: of a channel that does not it sees
// nothing.
std::shared_ptr<ChannelSource> MakeSecondStream(std::shared_ptr<ChannelState> camera);

// `source` for several threads: one at a time, since a channel that is being stopped and a still
// picture of it may overlap. The lock is held while the source draws and reads.
std::shared_ptr<ChannelSource> MakeGuarded(std::shared_ptr<ChannelSource> source);

}  // namespace zebx::zebdev
