// Life of a player, its identity, and the opening and closing of recordings.
#include "playback/decode_wnd.h"

#include <utility>

#include "capture/guarded.h"
#include "capture/show_param.h"
#include "platform/os/windows/windows.h"
#include "playback/decode_thread.h"
#include "playback/display_info.h"
#include "playback/opening_turn.h"
#include "playback/played_stream.h"
#include "playback/playing.h"

using namespace zebx;

namespace {

constexpr int kMaxPlayers = 16;

// Guards the number of players and the making of the thread. Not held while the thread is ended,
// which may wait for who makes a player.
constinit std::mutex g_players_mutex;

std::unique_ptr<CDecodeThread> MakeThread() {
  auto thread = std::make_unique<CDecodeThread>();
  return thread->Create() != 0 ? std::move(thread) : nullptr;
}

DWORD NextOpening() {
  static constinit std::atomic<DWORD> s_last = 0;
  DWORD opening = ++s_last;
  while (opening == 0) opening = ++s_last;
  return opening;
}

}  // namespace

constinit std::atomic<CDecodeThread*> CDecodeWnd::s_pDecodeThread = nullptr;
constinit DWORD CDecodeWnd::s_dwObjNum = 0;

CDecodeWnd::CDecodeWnd() : m_gate(std::make_unique<OpeningGate>()) {
  Guarded([] {
    const std::lock_guard lock(g_players_mutex);
    ++s_dwObjNum;
    if (s_pDecodeThread == nullptr) s_pDecodeThread = MakeThread().release();
    return 1;
  });
}

CDecodeWnd::~CDecodeWnd() {
  CloseDecodeWnd();
  CloseVideo(0);
  if (CDecodeThread* const thread = s_pDecodeThread) thread->AwaitUnused(this);
  // Out of reach before it ends: a player that is made meanwhile makes a thread of its own.
  std::unique_ptr<CDecodeThread> last_thread;
  {
    const std::lock_guard lock(g_players_mutex);
    if (--s_dwObjNum == 0) last_thread.reset(s_pDecodeThread.exchange(nullptr));
  }
  if (last_thread != nullptr) last_thread->Destroy();
}

int CDecodeWnd::OpenDecodeWnd(HWND host_window, int /*reserved*/, CShowParam* settings) {
  const OpeningTurn turn(*m_gate);
  const std::lock_guard lock(m_mutex);
  m_host_window = host_window;
  m_settings = settings;
  return 1;
}

void CDecodeWnd::CloseDecodeWnd() {
  const OpeningTurn turn(*m_gate);
  const std::lock_guard lock(m_mutex);
  m_settings = nullptr;
}

int CDecodeWnd::OpenVideo(const CString& file, int speed, int sound, int /*reserved*/) {
  return Guarded([&] { return Open(file, speed, sound); });
}

int CDecodeWnd::Open(const CString& file, int speed, int sound) {
  const OpeningTurn turn(*m_gate);
  CloseVideo(0);
  const CDecodeThread* const thread = s_pDecodeThread;
  if (thread == nullptr || thread->GetCount() >= kMaxPlayers) return 0;
  std::unique_ptr<Playing> playing = MakePlaying(file);
  if (playing == nullptr) return 0;
  playing->m_state.m_speed = speed;
  playing->m_state.Set(PlayState::kOpen);
  if (sound != 0) playing->m_state.Set(PlayState::kSound);
  playing->m_state.m_seek = {0, 0};
  Start(std::move(playing));
  return 1;
}

// Everything of an opening but what the thread makes. The settings are called without the player's
// lock, since a host may have derived them.
std::unique_ptr<Playing> CDecodeWnd::MakePlaying(const CString& file) {
  CShowParam* const settings = m_settings;
  if (settings == nullptr) return nullptr;
  auto playing = std::make_unique<Playing>();
  playing->m_file_name = file;
  CZebFileInfo& header = playing->m_header;
  if (header.Create(file) == 0) return nullptr;
  FillRecordOfFile(playing->m_record, header, *settings);
  settings->SetCameraName(header.GetCameraName());
  settings->SetBoardName(header.GetBoardName());
  settings->SetHostName(header.GetHostName());

  playing->m_size = PlayedSize(header.GetFrameSize(), header.IsRT8Port() != 0);
  if (playing->m_size == CSize()) return nullptr;
  playing->m_stream.reset(CreatePlayedStream(playing->m_size, nullptr));
  if (playing->m_stream == nullptr) return nullptr;
  FitRecordToStream(playing->m_record, playing->m_size, header.GetFrameSize());
  settings->Show(nullptr);
  return playing;
}

void CDecodeWnd::Start(std::unique_ptr<Playing> playing) {
  const std::lock_guard lock(m_mutex);
  Close();  // what the settings of a host opened meanwhile
  if (m_settings != nullptr) m_settings->SetDrawStream(playing->m_stream.get());
  m_playing = std::move(playing);
  m_opening = NextOpening();
  m_is_ready = false;
  s_pDecodeThread.load()->Register(this);
  m_is_opened = true;
  m_is_running = true;
}

void CDecodeWnd::CloseVideo(int notify) {
  HWND window = nullptr;
  {
    const std::lock_guard lock(m_mutex);
    Close();
    window = m_host_window;
  }
  if (notify != 0) TellClosed(window);
}

void CDecodeWnd::OnVideoPlay(UINT code, LPARAM opening) {
  std::unique_lock lock(m_mutex);
  if (m_opening == 0 || opening != static_cast<LPARAM>(m_opening.load())) return;
  // The host may delete the player: nothing of it is touched once the host is told.
  const HWND window = m_host_window;
  Playing& playing = *m_playing;
  if (code == ZEBX_PLAY_CLOSED) {
    Close();
    lock.unlock();
    TellClosed(window);
  } else if (code == ZEBX_PLAY_FRAME) {
    Guarded([&] { return OpenAudio(playing.m_frame.get()); });
    m_told_position = playing.m_position;
    tag_PLAYPOS* const position = &m_told_position;
    lock.unlock();
    os::SendMessage(window, ZEBX_MSG_VIDEOPLAY, code, reinterpret_cast<LPARAM>(position));
  } else if (code == ZEBX_PLAY_OPENED) {
    // Without the lock, as a host's window on another thread may control the player in there.
    const std::shared_ptr<std::atomic<bool>> is_held = playing.m_is_held;
    CVideoData* const frame = playing.m_frame.get();
    *is_held = true;
    lock.unlock();
    os::SendMessage(window, ZEBX_MSG_VIDEOPLAY, code, reinterpret_cast<LPARAM>(frame));
    *is_held = false;
  }
}

// The same for a player that is closed already. With the lock held.
void CDecodeWnd::Close() {
  m_is_opened = false;
  m_is_running = false;
  if (CDecodeThread* const thread = s_pDecodeThread) thread->Unregister(this);
  if (m_settings != nullptr) m_settings->SetDrawStream(nullptr);
  m_playing.reset();
  m_opening = 0;
  m_is_ready = false;
}

void CDecodeWnd::TellClosed(HWND window) {
  if (os::IsWindow(window) == 0) return;
  os::SendMessage(window, ZEBX_MSG_VIDEOPLAY, ZEBX_PLAY_CLOSED, 0);
}

int CDecodeWnd::Lock() {
  m_mutex.lock();
  return 1;
}

int CDecodeWnd::Unlock() {
  m_mutex.unlock();
  return 1;
}

CZebFile* CDecodeWnd::GetZebFile() {
  const std::lock_guard lock(m_mutex);
  return m_playing != nullptr && m_playing->m_frame != nullptr ? m_playing->m_frame->GetFile()
                                                               : nullptr;
}

int CDecodeWnd::GetPicture(CImage* image) {
  NoxshowStream stream = nullptr;
  tag_FRAMESIZE frame_size{};
  {
    const std::lock_guard lock(m_mutex);
    if (m_playing == nullptr) return 0;
    stream = m_playing->m_stream.get();
    frame_size = m_playing->m_header.GetFrameSize();
  }
  // A stream may be destroyed while it is copied.
  return Guarded([&] { return CapturePicture(stream, frame_size, image); });
}

int CDecodeWnd::IsRT8Port() {
  const std::lock_guard lock(m_mutex);
  return m_playing != nullptr && m_playing->m_header.IsRT8Port() != 0 ? 1 : 0;
}
