// What the players tell the host's window.
#pragma once

#include "platform/framework/time.h"
#include "platform/os/windows/windows.h"

// Sent, not posted, on the thread that owns the player's hidden window: wparam is one of the codes
// below, lparam depends on it.
inline constexpr UINT ZEBX_MSG_VIDEOPLAY = os::kWmUser + 102;

enum : WPARAM {
  ZEBX_PLAY_CLOSED = 0,  // the player closed: the file's end, an error, or CloseVideo(1). 0
  ZEBX_PLAY_FRAME = 1,   // a frame was shown: the player's tag_PLAYPOS*, valid inside the handler
  ZEBX_PLAY_OPENED = 3,  // the file is open: the CVideoData* that frames are read into, valid until
                         // CloseVideo; its GetFile is the open file
};

// Where playback stands.
struct tag_PLAYPOS {
  int m_block;         // counted from 0
  int m_frame;         // in its block
  DWORD m_file_frame;  // counted from the file's first
  CTime m_time;
};

static_assert(sizeof(tag_PLAYPOS) == 16);
