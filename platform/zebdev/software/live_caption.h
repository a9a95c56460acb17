// The display record of a channel's live picture.
#pragma once

#include "platform/noxdisplay/display_record.h"
#include "platform/zebdev/software/channel_state.h"

namespace zebx::zebdev {

// What the device itself knows of the picture.
struct LiveMarks {
  bool m_is_lost = false;
  bool m_has_sound = false;  // that is listened to
  int m_encode_width = 0;    // what mask areas are counted in
  int m_encode_height = 0;
};

// `caption` is null when the host gave none: then only the device's own marks are shown. The clock
// shows the time of day.
tag_DISPLAYINFO LiveDisplayRecord(const tag_CAPTIONINFO* caption, const MaskAreas& masks,
                                  const LiveMarks& marks);

}  // namespace zebx::zebdev
