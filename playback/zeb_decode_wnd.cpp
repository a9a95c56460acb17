#include "playback/zeb_decode_wnd.h"

#include <bit>
#include <utility>

#include "capture/video_data.h"
#include "platform/os/sound/wave_out.h"
#include "playback/played_stream.h"
#include "playback/stream_pictures.h"
#include "playback/wave_out.h"

using namespace zebx;

namespace {

constexpr UINT kChildId = 400;
constexpr const char* kTitle = "STREAMDECODER";

// With fewer buffers queued the host is asked for more speech.
constexpr int kFewBuffers = 2;

}  // namespace

CZebDecodeWnd::CZebDecodeWnd() = default;

CZebDecodeWnd::~CZebDecodeWnd() {
  TakePictures();
  EndSound();
  DestroyWindow();
}

int CZebDecodeWnd::OpenDecodeWnd(HWND parent, Notify notify, void* user_data, CShowParam* settings,
                                 tag_FRAMESIZE frame_size) {
  CloseDecodeWnd();
  auto pictures = std::make_unique<StreamPictures>(settings, frame_size);
  if (CreateChild(parent, kTitle, kChildId) == 0) return 0;
  {
    const std::lock_guard lock(m_audio_mutex);
    m_audio_window = GetSafeHwnd();
    m_notify = notify;
    m_user_data = user_data;
  }
  const std::lock_guard lock(m_picture_mutex);
  m_pictures = std::move(pictures);
  return 1;
}

// The window goes last and without a lock: its thread may be inside the callback, which closes too.
void CZebDecodeWnd::CloseDecodeWnd() {
  {
    const std::lock_guard lock(m_closing_mutex);
    const auto pictures = TakePictures();
    if (pictures != nullptr) pictures->EndDecoding();
    EndSound();
    if (pictures != nullptr) pictures->End();
  }
  DestroyWindow();
}

std::unique_ptr<StreamPictures> CZebDecodeWnd::TakePictures() {
  const std::lock_guard lock(m_picture_mutex);
  return std::move(m_pictures);
}

void CZebDecodeWnd::EndSound() {
  const std::lock_guard lock(m_audio_mutex);
  m_audio_window = nullptr;
  m_notify = nullptr;
  m_user_data = nullptr;
  CloseAudio();
}

int CZebDecodeWnd::DecodeOneFrame(CVideoData* frame) {
  if (frame == nullptr) return 0;
  bool has_sound = false;
  {
    const std::lock_guard lock(m_audio_mutex);
    has_sound = m_audio != nullptr;
  }
  const std::lock_guard lock(m_picture_mutex);
  if (m_pictures == nullptr) return 0;
  const bool is_shown = m_pictures->Show(*frame, has_sound);
  if (m_pictures->IsRT8Port()) m_is_rt8port = 1;
  return is_shown ? 1 : 0;
}

int CZebDecodeWnd::GetPicture(CImage* image) {
  NoxshowStream stream = nullptr;
  tag_FRAMESIZE frame_size{};
  {
    const std::lock_guard lock(m_picture_mutex);
    if (m_pictures == nullptr) return 0;
    stream = m_pictures->GetStream();
    frame_size = m_pictures->GetFrameSize();
  }
  // The display copies beside who presents or destroys.
  return CapturePicture(stream, frame_size, image);
}

int CZebDecodeWnd::IsRT8Port() {
  const std::lock_guard lock(m_picture_mutex);
  return m_is_rt8port;
}

int CZebDecodeWnd::DecodeAudio(CVideoData* frame, std::int16_t*, DWORD) {
  if (frame == nullptr) return 1;
  const std::lock_guard lock(m_audio_mutex);
  if (frame->IsVoice() == 0 || m_is_audio_enabled == 0) return CloseAudio();
  const DWORD length = frame->GetSpeechLength();
  // A host's own frame may announce more bytes than it has.
  if (OpenAudio(frame) == 0 || !frame->HasRoomFor(0, length)) return 1;
  m_audio->Play(frame->GetSpeechBuf(), static_cast<int>(length));
  return 1;
}

void CZebDecodeWnd::EnableAudio(int enable) {
  const std::lock_guard lock(m_audio_mutex);
  m_is_audio_enabled = enable;
  if (enable == 0) CloseAudio();
}

int CZebDecodeWnd::OpenAudio(CVideoData* frame) {
  const std::lock_guard lock(m_audio_mutex);
  if (m_audio != nullptr) return 1;
  if (m_audio_window == nullptr || frame == nullptr) return 0;
  auto audio = std::make_unique<CWaveOut>();
  const BYTE flag = frame->GetEncoderType() == kEncoderTypeRT8Port ? 1 : 0;
  if (audio->Open(m_audio_window, flag) == 0) return 0;
  m_audio = std::move(audio);
  return 1;
}

int CZebDecodeWnd::CloseAudio() {
  const std::lock_guard lock(m_audio_mutex);
  if (const auto audio = std::move(m_audio); audio != nullptr) audio->Close();
  return 1;
}

// Nothing of this object is touched once the host's callback runs: it may destroy it.
LRESULT CZebDecodeWnd::OnWomDone(WPARAM device, LPARAM header) {
  Notify notify = nullptr;
  void* user_data = nullptr;
  {
    const std::lock_guard lock(m_audio_mutex);
    if (m_audio == nullptr) return 0;
    m_audio->OnDone(std::bit_cast<HWAVEOUT>(device), std::bit_cast<os::WaveHeader*>(header));
    if (m_audio->GetQueuedCount() >= kFewBuffers) return 0;
    notify = m_notify;
    user_data = m_user_data;
  }
  if (notify != nullptr) notify(0, user_data, 0);
  return 0;
}

std::span<const os::MessageMapEntry> CZebDecodeWnd::GetMessageMap() const {
  static constexpr os::MessageMapEntry kMap[] = {
      {os::kMmWomDone, &os::HandleWith<CZebDecodeWnd, &CZebDecodeWnd::OnWomDone>}};
  return kMap;
}
