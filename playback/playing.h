// What one opening of a player of single files holds, from OpenVideo to CloseVideo.
#pragma once

#include <atomic>
#include <memory>

#include "capture/video_data.h"
#include "platform/framework/geometry.h"
#include "platform/noxdisplay/display_record.h"
#include "playback/play_messages.h"
#include "playback/play_state.h"
#include "playback/played_stream.h"
#include "record/zeb_file_info.h"

namespace zebx {

// Guarded by the player's lock. What the thread makes when it opens the file is null before.
struct Playing {
  CString m_file_name;
  CZebFileInfo m_header;
  tag_DISPLAYINFO m_record = {};
  CSize m_size;  // of stream and decoder
  std::unique_ptr<NoxshowStreamState, DestroyHandle> m_stream;

  PlayState m_state;
  PlayState m_snapshot;  // of the state, for the frame that is worked on
  CTime m_pending_time;  // to be sought when the file is ready; 0 for none

  std::unique_ptr<NxcDecoder, DestroyHandle> m_decoder;
  std::unique_ptr<CVideoData> m_frame;  // the last one read; has the file
  DWORD m_interval_ms = 0;              // for which the frame shown stays
  DWORD m_last_tick_ms = 0;             // when it was shown
  tag_PLAYPOS m_position = {};          // of the frame shown

  // True while the host is told that the file is open: no frame is read meanwhile. Shared with
  // whoever tells, since the player may be gone afterwards.
  std::shared_ptr<std::atomic<bool>> m_is_held = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace zebx
