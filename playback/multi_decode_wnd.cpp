// Opening, closing and telling the host. The thread is in multi_decode_wnd_stream.cpp, the control
// operations in multi_decode_wnd_control.cpp.
#include "playback/multi_decode_wnd.h"

#include <utility>

#include "capture/guarded.h"
#include "capture/show_param.h"
#include "playback/display_info.h"
#include "playback/multi_decode_fields.h"
#include "playback/played_stream.h"

using namespace zebx;

namespace {

constexpr UINT kWindowId = 400;
constexpr UINT kTimerId = 100;
constexpr DWORD kTimerMs = 5;
constexpr int kPanes = 4;
// Fewer buffers than this, and sound runs short.
constexpr int kEnoughQueued = 2;

}  // namespace

CMultiDecodeWnd::CMultiDecodeWnd() : m_fields(std::make_unique<Fields>()) {}

CMultiDecodeWnd::~CMultiDecodeWnd() {
  CloseDecodeWnd();
}

std::span<const os::MessageMapEntry> CMultiDecodeWnd::GetMessageMap() const {
  static constexpr os::MessageMapEntry kMap[] = {
      {os::kWmTimer, os::HandleWith<CMultiDecodeWnd, &CMultiDecodeWnd::OnTimer>},
      {os::kMmWomDone, os::HandleWith<CMultiDecodeWnd, &CMultiDecodeWnd::OnWomDone>},
      {ZEBX_MSG_VIDEOPLAY, os::HandleWith<CMultiDecodeWnd, &CMultiDecodeWnd::OnVideoPlay>},
  };
  return kMap;
}

int CMultiDecodeWnd::OpenDecodeWnd(HWND host_window, CShowParam* settings, int pane) {
  if (pane < 0 || pane >= kPanes) return 0;
  CloseDecodeWnd();
  const OpeningTurn turn(m_fields->m_gate);
  if (!turn || CreateChild(host_window, "VideoPlayWnd", kWindowId) == 0) return 0;
  const std::lock_guard lock(m_fields->m_lock);
  m_fields->m_host_window = host_window;
  m_fields->m_settings = settings;
  m_fields->m_pane = pane;
  return 1;
}

void CMultiDecodeWnd::CloseDecodeWnd() {
  OpeningTurn turn(m_fields->m_gate);
  if (!turn) return;
  Close();
  // Without settings nothing is opened before the window is gone.
  m_fields->m_settings = nullptr;
  // A handler that still runs on the window's thread, and is waited for, may be waiting for a turn.
  turn.End();
  DestroyWindow();
}

int CMultiDecodeWnd::OpenVideo(const CString& file, int speed, int, int) {
  const OpeningTurn turn(m_fields->m_gate);
  if (!turn) return 0;
  Close();
  return Guarded([&] { return Open(file, speed); });
}

// What is made before a step that fails waits for the next closing.
int CMultiDecodeWnd::Open(const CString& file, int speed) {
  Fields& own = *m_fields;
  if (own.m_settings == nullptr) return 0;
  CShowParam& settings = *own.m_settings;
  auto header = std::make_unique<CZebFileInfo>();
  if (header->Create(file) == 0) return 0;

  own.m_record = std::make_unique<tag_DISPLAYINFO>();
  FillRecordOfFile(*own.m_record, *header, settings);
  settings.SetCameraName(header->GetCameraName());
  settings.SetBoardName(header->GetBoardName());
  settings.SetHostName(header->GetHostName());

  const tag_FRAMESIZE frame_size = header->GetFrameSize();
  const bool is_rt8port = header->IsRT8Port() != 0;
  const CSize size = PlayedSize(frame_size, is_rt8port);
  const NoxshowStream stream = size == CSize{} ? nullptr : CreatePlayedStream(size, nullptr);
  {
    const std::lock_guard lock(own.m_lock);
    own.m_header = std::move(header);
    own.m_frame_size = frame_size;
    own.m_is_rt8port = is_rt8port;
    own.m_size = size;
    own.m_stream = stream;
  }
  if (stream == nullptr) return 0;

  FitRecordToStream(*own.m_record, size, frame_size);
  settings.Show(nullptr);
  // A follower's window stays as it is until its time comes.
  if (own.m_pane == 0) settings.SetDrawStream(stream);

  // The thread looks at none of this before the lock is free.
  const std::lock_guard lock(own.m_lock);
  own.m_file_name = file;
  own.m_state = PaneState();
  own.m_state.Set(PlayState::kOpen);
  own.m_state.m_speed = speed;
  own.m_state.m_seek = {.m_block = 0, .m_frame = 0};
  own.m_state.m_is_started = own.m_pane == 0;
  if (CreateStreamThread() == 0) {
    own.m_state = {};
    return 0;
  }
  own.m_run.Set();
  return 1;
}

int CMultiDecodeWnd::CreateStreamThread() {
  Fields& own = *m_fields;
  const std::lock_guard lock(own.m_lock);
  if (own.m_thread.IsStarted()) return 1;
  for (os::Event* event : {&own.m_timer, &own.m_run, &own.m_wake, &own.m_stop, &own.m_ready}) {
    event->Reset();
  }
  own.m_has_run_event = true;
  own.m_has_thread =
      own.m_thread.Start([this] { StreamThread(this); }, os::ThreadPriority::kBelowNormal);
  if (!own.m_has_thread) return 0;
  os::SetTimer(GetSafeHwnd(), kTimerId, kTimerMs);
  return 1;
}

int CMultiDecodeWnd::DestroyStreamThread() {
  Fields& own = *m_fields;
  if (!own.m_thread.IsStarted()) return 1;
  os::KillTimer(GetSafeHwnd(), kTimerId);
  own.m_stop.Set();
  own.m_thread.Join();
  const std::lock_guard lock(own.m_lock);
  own.m_has_thread = false;
  return 1;
}

void CMultiDecodeWnd::Close() {
  Fields& own = *m_fields;
  DestroyStreamThread();
  std::unique_ptr<CVideoData> frame;
  std::unique_ptr<CZebFileInfo> header;
  NoxshowStream stream = nullptr;
  {
    const std::lock_guard lock(own.m_lock);
    ++own.m_opening;
    own.m_state = {};
    frame = std::move(own.m_frame);
    header = std::move(own.m_header);
    stream = std::exchange(own.m_stream, nullptr);
    own.m_is_rt8port = false;
  }
  if (own.m_settings != nullptr) own.m_settings->SetDrawStream(nullptr);
  noxshowDestroyStream(stream);
  own.m_record.reset();
  os::RemoveMessages(GetSafeHwnd(), ZEBX_MSG_VIDEOPLAY, ZEBX_MSG_VIDEOPLAY);
}

void CMultiDecodeWnd::CloseVideo(int notify) {
  if (OpeningTurn turn(m_fields->m_gate); turn) CloseInTurn(turn, notify);
}

void CMultiDecodeWnd::CloseInTurn(OpeningTurn& turn, int notify) {
  Close();
  const HWND host_window = m_fields->m_host_window;
  turn.End();
  // The host may delete the player meanwhile.
  if (notify != 0 && os::IsWindow(host_window) != 0) {
    os::SendMessage(host_window, ZEBX_MSG_VIDEOPLAY, ZEBX_PLAY_CLOSED, 0);
  }
}

LRESULT CMultiDecodeWnd::OnTimer(WPARAM, LPARAM) {
  m_fields->m_timer.Set();
  return Default();
}

LRESULT CMultiDecodeWnd::OnWomDone(WPARAM device, LPARAM header) {
  CWaveOut* const wave_out = m_fields->m_wave_out.get();
  if (wave_out == nullptr) return 0;
  wave_out->OnDone(reinterpret_cast<HWAVEOUT>(device), reinterpret_cast<os::WaveHeader*>(header));
  if (wave_out->GetQueuedCount() < kEnoughQueued) m_fields->m_wake.Set();
  return 0;
}

LRESULT CMultiDecodeWnd::OnVideoPlay(WPARAM code, LPARAM opening) {
  Fields& own = *m_fields;
  if (code == ZEBX_PLAY_CLOSED) {
    OpeningTurn turn(own.m_gate);
    if (turn && opening == own.m_opening) CloseInTurn(turn, 1);
    return 0;
  }
  HWND host_window = nullptr;
  LPARAM told = 0;
  {
    const std::lock_guard lock(own.m_lock);
    if (opening != own.m_opening) return 0;
    host_window = own.m_host_window;
    own.m_told_position = own.m_position;
    told = code == ZEBX_PLAY_FRAME ? reinterpret_cast<LPARAM>(&own.m_told_position)
                                   : reinterpret_cast<LPARAM>(own.m_frame.get());
  }
  os::SendMessage(host_window, ZEBX_MSG_VIDEOPLAY, code, told);
  return 0;
}
