// The thread of a multi-stream player: it reads, decodes and shows the frames of one opening.
#include <initializer_list>
#include <utility>

#include "capture/show_param.h"
#include "platform/framework/error_report.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/os/clock.h"
#include "playback/display_info.h"
#include "playback/multi_decode_fields.h"
#include "playback/multi_decode_wnd.h"
#include "playback/played_file.h"
#include "playback/played_stream.h"
#include "record/zeb_file.h"

using namespace zebx;

namespace {

// Speeds at which frames are left out.
constexpr int kShowEveryFourth = 2;
constexpr int kShowEverySixth = 3;

// How far a follower may be off the time that it follows.
constexpr LONGLONG kMaxDriftSeconds = 1;

int FramesLeftOut(int speed) {
  if (speed == kShowEveryFourth) return 3;
  return speed == kShowEverySixth ? 5 : 0;
}

}  // namespace

// What only the thread has. The player's fields that no lock guards stay as they are while it runs;
// the frame, which this alone replaces and reads into, is looked at and decoded without the lock.
class CMultiDecodeWnd::Run {
 public:
  explicit Run(CMultiDecodeWnd& player)
      : m_player(player), m_own(*player.m_fields), m_opening(m_own.m_opening) {}

  // Ends with the opening, or with the file, which the window is told then.
  void Play() {
    try {
      if (OpenFile()) {
        m_last_tick_ms = os::GetTickCount();
        Post(ZEBX_PLAY_OPENED);
        Next next = Next::kPass;
        while (next == Next::kPass) next = Pass();
        if (next == Next::kStop) return;
      }
    } catch (const std::exception& failure) {
      ReportError(failure);
      m_own.m_ready.Set();
    }
    Post(ZEBX_PLAY_CLOSED);
  }

 private:
  enum class Next { kGoOn, kWait, kPass, kStop, kFileEnds };

  bool OpenFile() {
    std::unique_ptr<CVideoData> frame = OpenPlayedFile(m_own.m_file_name);
    if (frame != nullptr) {
      m_decoder.reset(CreatePlayedDecoder(m_own.m_size, frame->GetEncoderType(), kNxcPostPlayback));
    }
    const std::lock_guard lock(m_own.m_lock);
    m_own.m_ready.Set();
    if (m_decoder == nullptr) return false;
    m_own.m_state.m_seek.ForgetZeros();
    m_snapshot = m_own.m_state;
    m_own.m_frame = std::move(frame);
    return true;
  }

  // One frame on the screen, and the wait for its successor's time.
  Next Pass() {
    SearchPendingTime();
    if (Await({&m_own.m_stop, &m_own.m_run}) == 0) return Next::kStop;
    switch (TakeUp()) {
      case Next::kWait:
        return Await({&m_own.m_stop, &m_own.m_changed}) == 0 ? Next::kStop : Next::kPass;
      case Next::kFileEnds:
        return Next::kFileEnds;
      default:
        break;
    }
    DecodePicture();
    if (!LeaveFramesOut()) return Next::kFileEnds;
    Present();
    return TellAndReadAhead() ? AwaitTurn() : Next::kFileEnds;
  }

  void SearchPendingTime() {
    const std::lock_guard lock(m_own.m_lock);
    if (m_own.m_pending_time != CTime()) m_player.PlayFrom(m_own.m_pending_time);
  }

  // Decides what the current frame is, and how it is played.
  Next TakeUp() {
    const std::lock_guard lock(m_own.m_lock);
    PaneState& state = m_own.m_state;
    if (!state.m_is_started) {
      if (File().GetBeginTime() > state.m_play_time) {
        m_own.m_changed.Reset();
        return Next::kWait;
      }
      state.m_is_started = true;
      m_own.m_settings->SetDrawStream(m_own.m_stream);
      return Next::kGoOn;  // the first frame is played as the state at the opening says
    }
    if (m_own.m_pane != 0 && IsAdrift(state.m_play_time)) m_player.PlayFrom(state.m_play_time);
    state.m_is_reading_moved = false;
    if (const FramePosition target = std::exchange(state.m_seek, {}); target.IsSeek()) {
      if (!SeekTo(*m_own.m_frame, File(), m_decoder.get(), target)) return Next::kFileEnds;
    }
    m_snapshot = state;
    return Next::kGoOn;
  }

  bool IsAdrift(CTime play_time) const {
    const LONGLONG drift = LONGLONG{TimeOfFrame().GetTime()} - LONGLONG{play_time.GetTime()};
    return drift > kMaxDriftSeconds || drift < -kMaxDriftSeconds;
  }

  void DecodePicture() {
    const CVideoData& frame = *m_own.m_frame;
    if (frame.IsVideoLost() != 0) return;
    const bool is_fast = m_snapshot.m_speed > 0 && !m_snapshot.Has(PlayState::kSingleStep);
    const DWORD post_processing = is_fast ? 0 : DWORD{kNxcPostPlayback};
    DecodeFrame(m_decoder.get(), frame);
    RestoreLostSurface(m_own.m_stream);
    PutPicture(m_decoder.get(), m_own.m_stream, RowOrder::kTopDown, post_processing);
  }

  // Those frames are decoded, since the next ones depend on them. What is shown beside the picture
  // is that of the last one.
  bool LeaveFramesOut() {
    for (int i = FramesLeftOut(m_snapshot.m_speed); i > 0; --i) {
      if (!ReadNext()) return false;
      DecodeFrame(m_decoder.get(), *m_own.m_frame);
    }
    return true;
  }

  void Present() {
    const CShowParam& settings = *m_own.m_settings;
    tag_DISPLAYINFO& record = *m_own.m_record;
    const CTime time = TimeOfFrame();
    SetBits(record, noxdisplay::kShowVideoLost, m_own.m_frame->IsVideoLost() != 0);
    SetBits(record, noxdisplay::kShowAudio | noxdisplay::kShowBeginTime, false);
    SetBits(record, noxdisplay::kShowActive, settings.IsActive() != 0);
    SetBits(record, kShowCaption | noxdisplay::kShowEndTime, settings.IsShowCaption() != 0);
    SetTimeOfDay(record.m_clock, time);
    SetText(record.m_end_time, time.Format("%Y %m %d"));
    SetCaptionColors(record, settings.GetCaptionColor());
    RestoreLostSurface(m_own.m_stream);
    noxshowDisplay(m_own.m_stream, settings.GetWnd(), &record);
  }

  // Under one lock: whoever is told of the frame, and steps back from it, finds the next one read.
  bool TellAndReadAhead() {
    const std::lock_guard lock(m_own.m_lock);
    m_own.m_position = PositionOf(*m_own.m_frame);
    Post(ZEBX_PLAY_FRAME);
    if (m_snapshot.Has(PlayState::kSingleStep)) m_own.m_run.Reset();
    const DWORD stamp = m_own.m_frame->GetTimeStamp();
    if (!ReadNext()) return false;
    const int speed = m_snapshot.m_speed == kShowEveryFourth ? 0 : m_snapshot.m_speed;
    m_interval_ms = FrameInterval(stamp, m_own.m_frame->GetTimeStamp(), speed);
    return true;
  }

  // A frame is due at the first tick after its interval, and the next interval counts from that
  // tick: up to a tick a frame is lost, on purpose. A time-out of the wait would change nothing.
  Next AwaitTurn() {
    while (true) {
      switch (Await({&m_own.m_stop, &m_own.m_wake, &m_own.m_timer})) {
        case 0:
          return Next::kStop;
        case 1:
          m_own.m_wake.Reset();
          return Next::kPass;
        default:
          m_own.m_timer.Reset();
          const DWORD now = os::GetTickCount();
          if (now - m_last_tick_ms < m_interval_ms) break;
          m_last_tick_ms = now;
          return Next::kPass;
      }
    }
  }

  static DWORD Await(std::initializer_list<os::Event*> events) {
    return os::WaitForMultipleObjects({events.begin(), events.size()});
  }

  // The frame stays while a seek is to come from where a search has moved reading: what is there is
  // no successor, which would be due after the whole way, or missing at the file's end.
  bool ReadNext() {
    const std::lock_guard lock(m_own.m_lock);
    if (m_own.m_state.m_is_reading_moved && m_own.m_state.m_seek.IsSeek()) return true;
    return File().ReadOneFrame(m_own.m_frame.get(), kNextFrame, 0) != 0;
  }

  CZebFile& File() const { return *m_own.m_frame->GetFile(); }
  CTime TimeOfFrame() const { return File().GetTime(m_own.m_frame->GetTimeStamp()); }

  // The position and the frame that the host is told of go by other ways: they may have changed, or
  // gone, when the window takes the message.
  void Post(WPARAM code) {
    os::PostNotice(m_player.GetSafeHwnd(), ZEBX_MSG_VIDEOPLAY, code, m_opening);
  }

  CMultiDecodeWnd& m_player;
  Fields& m_own;
  const DWORD m_opening;
  std::unique_ptr<NxcDecoder, DestroyHandle> m_decoder;
  PaneState m_snapshot;  // of the state, for the frame that is played
  DWORD m_last_tick_ms = 0;
  DWORD m_interval_ms = 0;
};

DWORD CMultiDecodeWnd::StreamThread(void* player) {
  return static_cast<CMultiDecodeWnd*>(player)->OnRun();
}

DWORD CMultiDecodeWnd::OnRun() {
  Run(*this).Play();
  return 0;
}
