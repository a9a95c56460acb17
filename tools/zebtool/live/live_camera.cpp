#include "tools/zebtool/live/live_camera.h"

#include <utility>

#include "capture/mask_info.h"
#include "capture/video_data.h"
#include "capture/zebx.h"
#include "platform/os/windows/windows.h"
#include "tools/zebtool/live/live_settings.h"

namespace zebtool {
namespace {

constexpr DWORD kRequestsIFrame = 1;
constexpr DWORD kMsPerSecond = 1000;
constexpr double kBitsPerByte = 8;

// What the device saw in the masks since the last frame, which is forgotten with it: the masks keep
// it until they are told to.
struct Seen {
  bool motion = false;
  bool alarm = false;
};

Seen TakeSeen(const CVideoData& frame) {
  Seen seen;
  for (CObject* entry : *frame.GetMaskList()) {
    auto* const mask = static_cast<CMaskInfo*>(entry);
    if (mask == nullptr) continue;
    seen.motion = seen.motion || mask->IsMove() != 0;
    seen.alarm = seen.alarm || mask->IsAlarm() != 0;
    mask->Reset();
  }
  if (frame.IsVideoAlarm() != 0) seen.alarm = true;
  seen.motion = seen.motion || seen.alarm;
  return seen;
}

}  // namespace

LiveCamera::LiveCamera(Identity identity, const Settings& settings)
    : m_identity(std::move(identity)),
      m_frame_size(settings.frame_size),
      m_encoder(settings.encoder) {
  for (const CRect& percent : settings.masks) {
    auto mask = std::make_unique<CMaskInfo>();
    mask->SetMaskRect(kWholeInPercent, percent, m_frame_size, m_identity.board_type);
    if (m_masks.IsMaskInfo(mask.get()) == 0) m_masks.AddMaskInfo(mask.release());
  }
  m_window = os::CreateWindow(nullptr, m_identity.name, settings.window,
                              [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; });
  m_show.SetHostName(settings.host_name);
  m_show.SetBoardName(settings.board_name);
  m_show.SetCameraName(m_identity.name);
  m_show.ShowCaption(1);
  m_show.SetMonitor(1);
  m_show.SetActive(m_identity.number == 1 ? 1 : 0);
  m_show.Create(m_window, 0);
}

LiveCamera::~LiveCamera() {
  os::DestroyWindow(m_window);
}

int LiveCamera::Open() {
  return zebxOpenCamera(&m_identity.id, 0, &m_encoder, &m_masks, nullptr, &m_show);
}

void LiveCamera::Close() {
  zebxCloseCamera(&m_identity.id);
}

bool LiveCamera::IsOpen() const {
  return zebxIsCameraOpen(&m_identity.id) != 0;
}

void LiveCamera::RequestIFrame() {
  zebxRequestNextFrame(&m_identity.id, &m_encoder, kRequestsIFrame);
}

void LiveCamera::ShowState() {
  if (m_recorder == nullptr) return;
  const CameraRecorder::State state = m_recorder->GetState();
  const bool is_recording = !state.file.empty() || !state.alarm_file.empty();
  if (is_recording != (m_show.IsRecord() != 0)) {
    m_show.SetTimeBegin(CTime::GetCurrentTime());
    m_show.SetRecord(is_recording ? 1 : 0);
  }
  m_show.SetAlarm(state.alarm_file.empty() ? 0 : 1);
}

CZebFileInfo LiveCamera::MakeHeader() const {
  CZebFileInfo header;
  header.SetCameraID(m_identity.id);
  header.SetCameraName(m_identity.name);
  header.SetBoardName(m_show.GetBoardName());
  header.SetHostName(m_show.GetHostName());
  header.SetFrameSize(m_frame_size);
  return header;
}

void LiveCamera::TakeFrame(CVideoData& frame) {
  const Seen seen = TakeSeen(frame);
  {
    const std::lock_guard lock(m_mutex);
    ++m_figures.frames;
    m_figures.i_frames += frame.IsIFrame() ? 1 : 0;
    m_figures.voiced_frames += frame.IsVoice() != 0 ? 1 : 0;
    CountBytes(frame);
    m_figures.motion_frames += seen.motion ? 1 : 0;
    m_figures.alarm_frames += seen.alarm ? 1 : 0;
    m_figures.is_video_lost = frame.IsVideoLost() != 0;
    m_figures.lost_pictures += m_figures.is_video_lost ? 1 : 0;
    m_figures.sees_motion = seen.motion;
    m_figures.is_in_alarm = seen.alarm;
    m_figures.frame_rate = frame.GetFrameRate();
  }
  if (m_recorder != nullptr) m_recorder->Take(frame, seen.alarm);
}

// With the lock held.
void LiveCamera::CountBytes(const CVideoData& frame) {
  const DWORD elapsed_ms = frame.GetTimeStamp() - m_second_begin_stamp;
  if (m_figures.frames == 1 || elapsed_ms >= kMsPerSecond) {
    if (m_figures.frames > 1) {
      m_figures.kbit_per_second = static_cast<double>(m_figures.bytes - m_bytes_before_second) *
                                  kBitsPerByte / static_cast<double>(elapsed_ms);
    }
    m_second_begin_stamp = frame.GetTimeStamp();
    m_bytes_before_second = m_figures.bytes;
  }
  m_figures.bytes += ULONGLONG{frame.GetVideoLength()} + frame.GetSpeechLength();
}

void LiveCamera::CountFaces(DWORD faces) {
  const std::lock_guard lock(m_mutex);
  m_figures.faces += faces;
}

LiveCamera::Figures LiveCamera::GetFigures() const {
  const std::lock_guard lock(m_mutex);
  return m_figures;
}

}  // namespace zebtool
