#include "playback/decode_thread.h"

#include <array>
#include <utility>

#include "capture/capture_app.h"
#include "capture/video_data.h"
#include "playback/decode_wnd.h"
#include "playback/play_messages.h"
#include "playback/wave_out.h"

using namespace zebx;

namespace {

constexpr UINT kWindowId = 400;
constexpr UINT kTimer = 100;
constexpr DWORD kTickMs = 5;
constexpr int kEnoughBuffers = 2;
constexpr BYTE kOtherSpeechEncoderType = 2;

// A notification's wparam: the code in the low half, the opening in the high one.
constexpr unsigned kOpeningShift = 32;
static_assert(sizeof(WPARAM) * 8 > kOpeningShift);

}  // namespace

CDecodeThread::CDecodeThread() : m_calls(std::make_shared<PlayerCalls>()) {}

CDecodeThread::~CDecodeThread() {
  Destroy();
}

int CDecodeThread::Create() {
  if (CreateChild(GetCaptureApp().GetHostWindow(), "VideoPlayWnd", kWindowId) == 0) return 0;
  m_stop.Reset();
  os::SetTimer(GetSafeHwnd(), kTimer, kTickMs);
  if (!m_thread.Start([this] { Run(); })) {
    DestroyWindow();
    return 0;
  }
  const std::lock_guard lock(m_mutex);
  m_is_running = true;
  return 1;
}

int CDecodeThread::Destroy() {
  m_stop.Set();
  m_thread.Join();
  std::unique_ptr<CWaveOut> output;
  {
    const std::lock_guard lock(m_mutex);
    m_is_running = false;
    output = std::move(m_output);
    m_players = {};
  }
  HWND const window = GetSafeHwnd();
  os::KillTimer(window, kTimer);
  output = nullptr;
  os::RemoveMessages(window, ZEBX_MSG_VIDEOPLAY, ZEBX_MSG_VIDEOPLAY);
  DestroyWindow();
  return 1;
}

int CDecodeThread::Register(CDecodeWnd* player) {
  const OpenPlayer opened = {player, player->GetOpening()};
  const std::lock_guard lock(m_mutex);
  return m_players.Add(opened) ? 1 : 0;
}

int CDecodeThread::Unregister(CDecodeWnd* player) {
  std::unique_ptr<CWaveOut> ended;  // the device is closed without the lock
  const std::lock_guard lock(m_mutex);
  if (!m_is_running) return 0;
  if (m_players.Owner() == player) ended = std::move(m_output);
  return m_players.Remove(player) ? 1 : 0;
}

int CDecodeThread::GetCount() const {
  const std::lock_guard lock(m_mutex);
  return m_players.Count();
}

int CDecodeThread::SetAudioOwner(CDecodeWnd* player, CVideoData* frame) {
  if (player == nullptr || frame == nullptr) return 0;
  OpenPlayer opened;
  {
    const std::lock_guard lock(m_mutex);
    if (!m_is_running) return 0;
    if (m_players.Owner() == player) return 1;
    opened = m_players.InSlot(player);
    if (m_players.Owner() != nullptr || opened.m_player == nullptr) return 0;
  }
  // Opening a device takes its time, during which the player may be closed, even opened again.
  auto output = std::make_unique<CWaveOut>();
  const BYTE decoder_flag = frame->GetEncoderType() == kOtherSpeechEncoderType ? 1 : 0;
  if (output->Open(GetSafeHwnd(), decoder_flag) == 0) return 0;
  const std::lock_guard lock(m_mutex);
  if (!m_players.MakeOwner(opened)) return 0;
  m_audio.Reset();
  m_output = std::move(output);
  return 1;
}

int CDecodeThread::ReleaseAudioOwner(CDecodeWnd* player) {
  std::unique_ptr<CWaveOut> ended;
  const std::lock_guard lock(m_mutex);
  if (!m_is_running) return 0;
  if (player == nullptr || m_players.Owner() != player) return 1;
  ended = std::move(m_output);
  m_audio.Reset();
  return m_players.ReleaseOwner() ? 1 : 0;
}

int CDecodeThread::PlayAudio(CDecodeWnd* player, CVideoData* frame) {
  if (frame == nullptr || frame->IsVoice() == 0) return 0;
  const std::lock_guard lock(m_mutex);
  if (m_output == nullptr || m_players.Owner() != player) return 1;
  m_output->Play(frame->GetSpeechBuf(), static_cast<int>(frame->GetSpeechLength()));
  if (IsSoundShort()) {
    m_audio.Set();
  } else {
    m_audio.Reset();
  }
  return 1;
}

int CDecodeThread::IsAudioOwner(const CDecodeWnd* player) const {
  const std::lock_guard lock(m_mutex);
  return m_players.Owner() == player ? 1 : 0;
}

int CDecodeThread::PostVideoPlay(CDecodeWnd* player, DWORD code, DWORD opening) {
  const WPARAM code_and_opening = code | static_cast<WPARAM>(opening) << kOpeningShift;
  // The next frame tells again where playback stands; the other codes come once.
  const auto post = code == ZEBX_PLAY_FRAME ? os::PostMessage : os::PostNotice;
  post(GetSafeHwnd(), ZEBX_MSG_VIDEOPLAY, code_and_opening, reinterpret_cast<LPARAM>(player));
  return 1;
}

void CDecodeThread::AwaitUnused(const CDecodeWnd* player) {
  m_calls->AwaitEnd(player);
}

std::span<const os::MessageMapEntry> CDecodeThread::GetMessageMap() const {
  static constexpr std::array<os::MessageMapEntry, 3> kMap = {{
      {os::kWmTimer, os::HandleWith<CDecodeThread, &CDecodeThread::OnTimer>},
      {os::kMmWomDone, os::HandleWith<CDecodeThread, &CDecodeThread::OnWomDone>},
      {ZEBX_MSG_VIDEOPLAY, os::HandleWith<CDecodeThread, &CDecodeThread::OnVideoPlay>},
  }};
  return kMap;
}

LRESULT CDecodeThread::OnTimer(WPARAM, LPARAM) {
  m_tick.Set();
  return Default();
}

LRESULT CDecodeThread::OnWomDone(WPARAM device, LPARAM header) {
  const std::lock_guard lock(m_mutex);
  if (m_output == nullptr) return 0;
  m_output->OnDone(reinterpret_cast<HWAVEOUT>(device), reinterpret_cast<os::WaveHeader*>(header));
  if (IsSoundShort()) m_audio.Set();
  return 0;
}

LRESULT CDecodeThread::OnVideoPlay(WPARAM code_and_opening, LPARAM player) {
  const OpenPlayer told = {reinterpret_cast<CDecodeWnd*>(player),
                           static_cast<DWORD>(code_and_opening >> kOpeningShift)};
  std::unique_lock lock(m_mutex);
  if (told.m_player == nullptr || !m_players.Has(told)) return 0;
  const PlayerCall call(m_calls, told.m_player);
  lock.unlock();
  told.m_player->OnVideoPlay(static_cast<UINT>(code_and_opening), told.m_opening);
  return 0;
}

bool CDecodeThread::IsSoundShort() const {
  return m_output->GetQueuedCount() < kEnoughBuffers;
}
