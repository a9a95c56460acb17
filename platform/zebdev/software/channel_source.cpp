#include "platform/zebdev/software/channel_source.h"

namespace zebx::zebdev {

ChannelSource::~ChannelSource() = default;

}  // namespace zebx::zebdev
