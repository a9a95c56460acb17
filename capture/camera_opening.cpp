// A camera opens and closes, and takes other settings while its channel runs.
#include <utility>

#include "capture/capture_board.h"
#include "capture/capture_camera.h"
#include "capture/channel_config.h"
#include "capture/encode_param.h"
#include "capture/live_stream.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/show_param.h"
#include "capture/video_color.h"

using namespace zebx;

namespace {

constexpr DWORD kSecondStreamOffset = 2;  // of its channel, from the camera's own

bool PreviewsAudio(const CShowParam* show) {
  return show != nullptr && show->IsPreviewAudio() != 0;
}

}  // namespace

int CCaptureCamera::Open(const CEncodeParam* settings, const CMaskList* masks,
                         const CVideoColor* color, CShowParam* show) {
  if (!SetShowParam(show) || show == nullptr) return 0;
  if (IsOpen()) return 1;
  noxdevChSetChannelName(m_device, m_device_channel, show->GetCameraName().c_str());
  const Live live = MakeLive(settings, masks);
  if (live == nullptr) return 0;
  if (SetUp(*live, color) && StartStreams(live)) return 1;
  // The next opening adds its own areas to those that the device knows.
  if (!live->m_data.GetMaskList()->IsEmpty()) noxdevChClearMaskArea(m_device, m_device_channel);
  return 0;
}

CCaptureCamera::Live CCaptureCamera::MakeLive(const CEncodeParam* settings,
                                              const CMaskList* masks) const {
  auto live = std::make_shared<LiveStream>(ToCameraId(m_id));
  if (settings != nullptr) *live->m_data.GetEncodeParam() = *settings;
  if (masks == nullptr) return live;
  CMaskList& own = *live->m_data.GetMaskList();
  if ((own = *masks) == 0) return nullptr;
  for (const CObject* mask : own) {
    const tag_MASKAREA area = ToMaskArea(*static_cast<const CMaskInfo*>(mask));
    noxdevChAddMaskArea(m_device, m_device_channel, &area);
  }
  return live;
}

bool CCaptureCamera::SetUp(LiveStream& live, const CVideoColor* color) {
  const tag_CHANNELCONFIG config = FullConfig(*live.m_data.GetEncodeParam(), m_board->GetSpeed(),
                                              PreviewsAudio(m_show), CurrentWatermark());
  if (noxdevChSetConfig(m_device, m_device_channel, &config) != 0) return false;
  if (color != nullptr) {
    const tag_DEVCOLOR record = ToDeviceColor(*color);
    noxdevChSetVideoColor(m_device, m_device_channel, &record);
  }
  return true;
}

bool CCaptureCamera::StartStreams(const Live& live) {
  m_show->SetDrawStream(nullptr);
  // Before the start: the first frame may come at once, and the host may close the camera there.
  HWND window = m_show->GetWnd();
  const bool has_second_stream = HasSecondStream();
  {
    const std::lock_guard lock(m_mutex);
    m_live = live;
  }
  if (!StartStream(0)) {
    const std::lock_guard lock(m_mutex);
    m_live = nullptr;
    return false;
  }
  if (GetLive() != live) return true;
  noxdevChStartPreviewVideo(m_device, m_device_channel, window, 0);
  if (!has_second_stream) return true;
  StartStream(1);
  if (GetLive() != live) StopStream(1);
  return true;
}

bool CCaptureCamera::StartStream(DWORD stream) {
  const DWORD channel = m_device_channel + kSecondStreamOffset * stream;
  // It runs already when the device refused to stop it.
  const bool has_run = m_runs[stream].exchange(true);
  if (noxdevChStart(m_device, channel, 0, ChannelCallback, this) == 0) return true;
  m_runs[stream] = has_run;
  return false;
}

void CCaptureCamera::StopStream(DWORD stream) {
  const DWORD channel = m_device_channel + kSecondStreamOffset * stream;
  if (noxdevChStop(m_device, channel) == 0) m_runs[stream] = false;
}

bool CCaptureCamera::HasSecondStream() const {
  return m_board->GetBoardType() == kTwoStreamBoardType;
}

int CCaptureCamera::Close() {
  {
    const std::lock_guard lock(m_mutex);
    if (m_live == nullptr || m_is_closing) return 1;
    m_is_closing = true;
  }
  const bool has_second_stream = HasSecondStream();
  DeleteAllMasks();
  StopStream(0);
  if (has_second_stream) StopStream(1);
  Live live;
  CShowParam* show = nullptr;
  {
    const std::lock_guard lock(m_mutex);
    live = std::exchange(m_live, nullptr);
    show = std::exchange(m_show, nullptr);
    m_is_closing = false;
  }
  // The last call of the channel may hold it for a moment longer, when the host closes from there.
  live = nullptr;
  if (show != nullptr) {
    show->SetDrawStream(nullptr);
    show->Show(nullptr);
  }
  return 1;
}

int CCaptureCamera::Destroy() {
  Close();
  StopStream(0);
  SetShowParam(nullptr);
  return 0;
}

int CCaptureCamera::RequestNextFrame(const CEncodeParam& settings, DWORD request_bits) {
  constexpr DWORD kWantsIFrame = 0x1;
  const Live live = GetLive();
  if (live == nullptr) return 0;
  CEncodeParam& own = *live->m_data.GetEncodeParam();
  const bool previews_audio = PreviewsAudio(m_show);
  tag_CHANNELCONFIG config = WatermarkConfig(CurrentWatermark());
  if (!(settings == own)) {
    own = settings;
    config = FullConfig(own, m_board->GetSpeed(), previews_audio, CurrentWatermark());
  }
  noxdevChSetConfig(m_device, m_device_channel, &config);
  if (previews_audio) {
    noxdevChStartPreviewAudio(m_device, m_device_channel);
  } else {
    noxdevChStopPreviewAudio(m_device, m_device_channel);
  }
  if ((request_bits & kWantsIFrame) != 0) noxdevChRequestIFrame(m_device, m_device_channel);
  return 1;
}

int CCaptureCamera::SetSpeed(DWORD speed) {
  if (m_show == nullptr) return 0;
  const tag_CHANNELCONFIG config = SpeedConfig(speed);
  if (noxdevChSetConfig(m_device, m_device_channel, &config) != 0) return 0;
  if (const Live live = GetLive()) live->m_resets_rates = true;
  return 1;
}
