// What a host does with a recording that plays.
#include "playback/decode_thread.h"
#include "playback/decode_wnd.h"
#include "playback/playing.h"
#include "record/zeb_file.h"

using namespace zebx;

void CDecodeWnd::Pause() {
  const std::lock_guard lock(m_mutex);
  if (!m_is_opened) return;
  if (m_is_running) {
    m_is_running = false;
    CloseAudio();
  } else {
    m_playing->m_state.Clear(PlayState::kSingleStep);
    m_is_running = true;
  }
}

int CDecodeWnd::IsPause() {
  return m_is_running ? 0 : 1;
}

int CDecodeWnd::PlayFrom(int block, int frame) {
  const std::lock_guard lock(m_mutex);
  if (!m_is_opened) return 0;
  m_playing->m_state.Clear(PlayState::kSingleStep);
  m_playing->m_state.m_seek = {block, frame};
  m_is_running = true;
  return 1;
}

int CDecodeWnd::PlayFrom(CTime time) {
  const std::lock_guard lock(m_mutex);
  return m_is_opened ? SeekTime(time) : 0;
}

int CDecodeWnd::SeekTime(CTime time) {
  Playing& playing = *m_playing;
  playing.m_pending_time = CTime();
  if (time >= playing.m_header.GetEndTime()) return 0;
  if (!m_is_ready) {
    playing.m_pending_time = time;
    return 1;
  }
  CVideoData& frame = *playing.m_frame;
  const TimeSearch found = FindTime(frame, *frame.GetFile(), playing.m_header.GetBeginTime(), time);
  if (found.m_seek) playing.m_state.m_seek = *found.m_seek;
  if (found.m_ends_mode) playing.m_state.Clear(PlayState::kSilent);
  if (found.m_result != 0) m_is_running = true;
  return found.m_result;
}

int CDecodeWnd::StepNext() {
  const std::lock_guard lock(m_mutex);
  if (!m_is_opened) return 0;
  StepOne();
  return 1;
}

int CDecodeWnd::StepPrev() {
  const std::lock_guard lock(m_mutex);
  if (!m_is_opened || m_playing->m_frame == nullptr) return 0;
  const auto target = StepBack(*m_playing->m_frame->GetFile());
  if (!target) return 0;
  m_playing->m_state.m_seek = *target;
  StepOne();
  return 0;
}

void CDecodeWnd::StepOne() {
  m_playing->m_state.Set(PlayState::kSingleStep);
  CloseAudio();
  m_is_running = true;
}

void CDecodeWnd::ChangePlaySpeed(int speed) {
  const std::lock_guard lock(m_mutex);
  if (m_is_opened) m_playing->m_state.m_speed = speed;
}

int CDecodeWnd::GetPlaySpeed() {
  const std::lock_guard lock(m_mutex);
  return m_playing != nullptr ? m_playing->m_state.m_speed : 0;
}

void CDecodeWnd::EnableSound(int enable) {
  const std::lock_guard lock(m_mutex);
  if (!m_is_opened) return;
  m_playing->m_state.Clear(PlayState::kSound);
  if (enable != 0) m_playing->m_state.Set(PlayState::kSound);
}

void CDecodeWnd::ResetPlay() {
  const std::lock_guard lock(m_mutex);
  if (!m_is_opened) return;
  m_playing->m_state.m_speed = 0;
  m_playing->m_state.Clear(PlayState::kSingleStep | PlayState::kSilent);
  m_is_running = true;
}

int CDecodeWnd::OpenAudio(CVideoData* frame) {
  const PlayState& state = m_playing->m_state;
  const bool is_voiced = frame != nullptr && frame->IsVoice() != 0;
  const bool has_sound = is_voiced && state.Has(PlayState::kSound) && state.m_speed == 0 &&
                         !state.Has(PlayState::kSingleStep | PlayState::kSilent) && m_is_running;
  return has_sound ? s_pDecodeThread.load()->SetAudioOwner(this, frame) : CloseAudio();
}

int CDecodeWnd::CloseAudio() {
  return s_pDecodeThread.load()->ReleaseAudioOwner(this);
}
