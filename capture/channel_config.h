// The records that cameras give their channels: the configuration, one for each occasion, mask
// areas and colours.
#pragma once

#include "platform/zebdev/device_records.h"

class CEncodeParam;
class CMaskInfo;
class CVideoColor;

namespace zebx {

// Everything: for a camera that opens or takes other encoder settings over. The transparency of the
// watermark is that of CurrentWatermark.
tag_CHANNELCONFIG FullConfig(const CEncodeParam& settings, DWORD speed, bool previews_audio,
                             DWORD watermark);
// The watermark alone: for a camera whose encoder settings stay.
tag_CHANNELCONFIG WatermarkConfig(DWORD watermark);
// The speed alone.
tag_CHANNELCONFIG SpeedConfig(DWORD speed);

// The transparency for a configuration; zebdev::kNoWatermark when it is off or was never set.
DWORD CurrentWatermark();

tag_MASKAREA ToMaskArea(const CMaskInfo& mask);
tag_DEVCOLOR ToDeviceColor(const CVideoColor& color);

}  // namespace zebx
