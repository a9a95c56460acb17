// What a player does when the shared thread calls: it opens the file, then shows each frame that is
// due and reads the next one ahead.
#include <utility>

#include "capture/guarded.h"
#include "capture/show_param.h"
#include "playback/decode_thread.h"
#include "playback/decode_wnd.h"
#include "playback/display_info.h"
#include "playback/played_file.h"
#include "playback/played_stream.h"
#include "playback/playing.h"
#include "record/zeb_file.h"

using namespace zebx;

int CDecodeWnd::OnDecode(int audio_flag, DWORD now) {
  if (!m_is_opened) return 0;
  const std::lock_guard lock(m_mutex);
  if (!m_is_opened) return 0;  // closed, or opened anew, while this waited
  if (*m_playing->m_is_held) return 1;
  const bool goes_on = Guarded([&] {
    if (m_playing->m_frame == nullptr) return OpenFile();
    return !m_is_running || !IsDue(audio_flag, now) || ShowFrame(now);
  });
  if (!goes_on) Guarded([&] { return End(); });
  return m_is_opened ? 1 : 0;
}

bool CDecodeWnd::OpenFile() {
  Playing& playing = *m_playing;
  std::unique_ptr<CVideoData> frame = OpenPlayedFile(playing.m_file_name);
  if (frame == nullptr) return false;
  // Of the size that the header told when the stream was made, whatever it says now.
  playing.m_decoder.reset(
      CreatePlayedDecoder(playing.m_size, frame->GetEncoderType(), DWORD{kNxcPostPlayback}));
  if (playing.m_decoder == nullptr) return false;

  s_pDecodeThread.load()->PostVideoPlay(this, ZEBX_PLAY_OPENED, m_opening);
  playing.m_frame = std::move(frame);
  playing.m_state.m_seek.ForgetZeros();
  playing.m_interval_ms = 0;
  playing.m_snapshot = playing.m_state;
  playing.m_last_tick_ms = 0;
  m_is_ready = true;
  return true;
}

bool CDecodeWnd::IsDue(int audio_flag, DWORD now) const {
  return audio_flag != 0 || now - m_playing->m_last_tick_ms >= m_playing->m_interval_ms;
}

// Shows the frame that was read ahead, or the one that is sought, and reads the next. False at the
// end of the file.
bool CDecodeWnd::ShowFrame(DWORD now) {
  Playing& playing = *m_playing;
  CVideoData& frame = *playing.m_frame;
  CZebFile& file = *frame.GetFile();
  if (playing.m_pending_time != CTime()) SeekTime(playing.m_pending_time);
  if (playing.m_state.m_seek.IsSeek()) {
    const FramePosition target = std::exchange(playing.m_state.m_seek, {});
    if (!SeekTo(frame, file, playing.m_decoder.get(), target)) return false;
  }

  playing.m_snapshot = playing.m_state;
  CDecodeThread& thread = *s_pDecodeThread.load();
  thread.PlayAudio(this, &frame);
  Present();
  thread.PostVideoPlay(this, ZEBX_PLAY_FRAME, m_opening);
  if (playing.m_snapshot.Has(PlayState::kSingleStep)) m_is_running = false;

  const DWORD shown_stamp = frame.GetTimeStamp();
  if (file.ReadOneFrame(&frame, kNextFrame, 0) == 0) return false;
  playing.m_interval_ms =
      FrameInterval(shown_stamp, frame.GetTimeStamp(), playing.m_snapshot.m_speed);
  playing.m_last_tick_ms = now;
  return true;
}

// Decodes the frame and shows it, and notes where it stands.
void CDecodeWnd::Present() {
  Playing& playing = *m_playing;
  CVideoData& frame = *playing.m_frame;
  const CZebFile& file = *frame.GetFile();
  const NoxshowStream stream = playing.m_stream.get();
  if (frame.IsVideoLost() == 0) {
    const bool is_fast =
        playing.m_snapshot.m_speed > 0 && !playing.m_snapshot.Has(PlayState::kSingleStep);
    DecodeFrame(playing.m_decoder.get(), frame);
    RestoreLostSurface(stream);
    PutPicture(playing.m_decoder.get(), stream,
               frame.IsRT() != 0 ? RowOrder::kTopDown : RowOrder::kBottomUp,
               is_fast ? 0 : DWORD{kNxcPostPlayback});
  }

  const CTime time = file.GetTime(frame.GetTimeStamp());
  if (m_settings != nullptr) {
    tag_DISPLAYINFO& record = playing.m_record;
    SetBits(record, noxdisplay::kShowVideoLost, frame.IsVideoLost() != 0);
    SetBits(record, noxdisplay::kShowAudio, s_pDecodeThread.load()->IsAudioOwner(this) != 0);
    SetTimeOfDay(record.m_clock, time);
    SetBits(record, kShowCaption | noxdisplay::kShowBeginTime | noxdisplay::kShowEndTime,
            m_settings->IsShowCaption() != 0);
    SetCaptionColors(record, m_settings->GetCaptionColor());
    RestoreLostSurface(stream);
    noxshowDisplay(stream, m_settings->GetWnd(), &record);
  }
  playing.m_position = PositionOf(frame);
}

// Ends playing; the notice closes in the window's thread. Without the memory for it the next pass
// comes here again.
int CDecodeWnd::End() {
  s_pDecodeThread.load()->PostVideoPlay(this, ZEBX_PLAY_CLOSED, m_opening);
  m_is_ready = true;
  m_is_opened = false;
  return 1;
}
