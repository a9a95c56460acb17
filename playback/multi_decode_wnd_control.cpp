// What the host steers a playing file with.
#include "capture/guarded.h"
#include "playback/multi_decode_fields.h"
#include "playback/multi_decode_wnd.h"
#include "playback/played_file.h"
#include "playback/played_stream.h"
#include "record/zeb_file.h"

using namespace zebx;

// A change of the play state: nobody else reads or writes it meanwhile, and a follower that waits
// for its time looks at it afterwards.
class CMultiDecodeWnd::Change {
 public:
  explicit Change(Fields& fields) : m_fields(fields), m_lock(fields.m_lock) {}
  ~Change() { m_fields.m_changed.Set(); }
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;

 private:
  Fields& m_fields;
  const std::lock_guard<std::recursive_mutex> m_lock;
};

void CMultiDecodeWnd::Pause() {
  Fields& own = *m_fields;
  const Change change(own);
  if (!own.m_has_thread) return;
  if (own.m_run.IsSet()) {
    own.m_run.Reset();
    return;
  }
  own.m_state.Clear(PlayState::kSingleStep);
  own.m_run.Set();
}

int CMultiDecodeWnd::IsPause() {
  return m_fields->m_has_run_event && !m_fields->m_run.IsSet() ? 1 : 0;
}

int CMultiDecodeWnd::PlayFrom(int block, int frame) {
  Fields& own = *m_fields;
  const Change change(own);
  if (!own.m_has_thread) return 0;
  own.m_state.Clear(PlayState::kSingleStep);
  own.m_state.m_seek = {.m_block = block, .m_frame = frame};
  own.m_run.Set();
  return 1;
}

int CMultiDecodeWnd::PlayFrom(CTime time) {
  return Guarded([&] { return SearchAndPlay(time); });
}

int CMultiDecodeWnd::SearchAndPlay(CTime time) {
  Fields& own = *m_fields;
  const Change change(own);
  if (!own.m_has_thread) return 0;
  const bool is_before_end = time < own.m_header->GetEndTime();
  if (is_before_end && !own.m_ready.IsSet()) {
    own.m_pending_time = time;
    return 1;
  }
  own.m_pending_time = CTime();
  if (!is_before_end || own.m_frame == nullptr) return 0;

  // The thread may be decoding the player's own frame.
  const auto frame = MakePlayedFrame(*own.m_frame->GetCameraID());
  const TimeSearch found =
      FindTime(*frame, *own.m_frame->GetFile(), own.m_header->GetBeginTime(), time);
  if (found.m_seek) {
    own.m_state.m_seek = *found.m_seek;
    own.m_state.m_is_reading_moved = true;
  }
  if (found.m_ends_mode) own.m_state.Clear(PlayState::kSilent);
  if (found.m_result == 0) return 0;
  own.m_run.Set();
  return 1;
}

int CMultiDecodeWnd::StepNext() {
  Fields& own = *m_fields;
  const Change change(own);
  if (!own.m_has_thread) return 0;
  own.m_state.Set(PlayState::kSingleStep);
  own.m_run.Set();
  return 1;
}

int CMultiDecodeWnd::StepPrev() {
  Fields& own = *m_fields;
  const Change change(own);
  if (own.m_frame == nullptr) return 0;
  const std::optional<FramePosition> before = StepBack(*own.m_frame->GetFile());
  if (!before) return 0;
  own.m_state.m_seek = *before;
  own.m_state.Set(PlayState::kSingleStep);
  own.m_run.Set();
  return 0;  // whether there is a frame before or not
}

void CMultiDecodeWnd::ChangePlaySpeed(int speed) {
  const Change change(*m_fields);
  m_fields->m_state.m_speed = speed;
}

int CMultiDecodeWnd::GetPlaySpeed() {
  const std::lock_guard lock(m_fields->m_lock);
  return m_fields->m_state.m_speed;
}

void CMultiDecodeWnd::EnableSound(int) {
  const Change change(*m_fields);
  m_fields->m_state.Clear(PlayState::kSound);
}

void CMultiDecodeWnd::ResetPlay() {
  Fields& own = *m_fields;
  const Change change(own);
  if (!own.m_has_thread) return;
  own.m_state.m_speed = 0;
  own.m_state.Clear(PlayState::kSingleStep | PlayState::kSilent);
  own.m_run.Set();
}

void CMultiDecodeWnd::SetPlayTime(CTime time) {
  const Change change(*m_fields);
  m_fields->m_state.m_play_time = time;
}

CZebFile* CMultiDecodeWnd::GetZebFile() {
  const std::lock_guard lock(m_fields->m_lock);
  return m_fields->m_frame == nullptr ? nullptr : m_fields->m_frame->GetFile();
}

int CMultiDecodeWnd::GetPicture(CImage* image) {
  NoxshowStream stream = nullptr;
  tag_FRAMESIZE frame_size{};
  {
    const std::lock_guard lock(m_fields->m_lock);
    stream = m_fields->m_stream;
    frame_size = m_fields->m_frame_size;
  }
  // A stream that is destroyed meanwhile is refused.
  return Guarded([&] { return CapturePicture(stream, frame_size, image); });
}

int CMultiDecodeWnd::Lock() {
  m_fields->m_lock.lock();
  return 1;
}

int CMultiDecodeWnd::Unlock() {
  m_fields->m_lock.unlock();
  return 1;
}

int CMultiDecodeWnd::IsRT8Port() {
  const std::lock_guard lock(m_fields->m_lock);
  return m_fields->m_is_rt8port ? 1 : 0;
}
