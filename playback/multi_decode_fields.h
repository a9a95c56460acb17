// What a multi-stream player has: only its own sources see it.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "capture/video_data.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/streams.h"
#include "platform/os/threads/event.h"
#include "platform/os/threads/thread.h"
#include "playback/multi_decode_wnd.h"
#include "playback/opening_turn.h"
#include "playback/play_state.h"
#include "playback/wave_out.h"
#include "record/zeb_file_info.h"

namespace zebx {

struct PaneState : PlayState {
  bool m_is_started = false;
  CTime m_play_time;  // what a follower follows
  // A search has left reading elsewhere. The seek that it asked for brings reading back.
  bool m_is_reading_moved = false;
};

}  // namespace zebx

struct CMultiDecodeWnd::Fields {
  zebx::OpeningGate m_gate;
  // Changed by who has the gate, the first ones only while no stream thread runs: that one reads
  // them.
  CShowParam* m_settings = nullptr;  // the host's
  int m_pane = 0;
  CString m_file_name;
  std::unique_ptr<tag_DISPLAYINFO> m_record;
  CSize m_size;  // of the stream's surface, and so of the decoder's pictures
  os::Thread m_thread;

  // The player's lock, which the host may hold, too. Held while frames are read and while a seek
  // decodes them; not while the host is told or a picture shown. Taken inside of the gate.
  std::recursive_mutex m_lock;
  // Changed under the lock alone.
  zebx::PaneState m_state;
  CTime m_pending_time;      // to be sought when the file is ready; 0 for none. Outlives a closing
  tag_PLAYPOS m_position{};  // of the frame shown last
  // Changed under the lock by who has the gate; the frame by the stream thread, too.
  HWND m_host_window = nullptr;
  bool m_has_thread = false;
  DWORD m_opening = 0;  // counts closings: what was posted before the last one is out of date
  std::unique_ptr<CVideoData> m_frame;  // read last; has the file
  std::unique_ptr<CZebFileInfo> m_header;
  tag_FRAMESIZE m_frame_size{};
  bool m_is_rt8port = false;
  NoxshowStream m_stream = nullptr;

  // Of the window's thread.
  tag_PLAYPOS m_told_position{};         // what the host is shown
  std::unique_ptr<CWaveOut> m_wave_out;  // never made

  std::atomic<bool> m_has_run_event = false;  // from the first opening on
  os::Event m_run;                            // clear in a pause
  os::Event m_wake;                           // ends the wait between two frames
  os::Event m_timer;                          // the window's timer ticked
  os::Event m_stop;                           // ends the thread
  os::Event m_ready;    // the thread has opened the file, or failed to; set under the lock
  os::Event m_changed;  // the state was changed: a follower that waits looks at it again
};
