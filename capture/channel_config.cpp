#include "capture/channel_config.h"

#include "capture/capture_app.h"
#include "capture/encode_param.h"
#include "capture/mask_info.h"
#include "capture/video_color.h"

using namespace zebx::zebdev;

namespace {

void SetBit(BYTE& bits, BYTE bit, bool on) {
  if (on) bits = static_cast<BYTE>(bits | bit);
}

}  // namespace

tag_CHANNELCONFIG zebx::FullConfig(const CEncodeParam& settings, DWORD speed, bool previews_audio,
                                   DWORD watermark) {
  tag_CHANNELCONFIG config = WatermarkConfig(watermark);
  config.m_valid = kConfigHasEncoder | kConfigHasSpeed | kConfigHasQuality |
                   kConfigHasMotionSensitivity | kConfigHasAlarmFrames;
  SetBit(config.m_valid, kConfigChecksVideoLoss, settings.IsVideoLostCheck() != 0);
  SetBit(config.m_streams, kConfigEncodesVideo, settings.IsVideoEncode() != 0);
  SetBit(config.m_streams, kConfigEncodesAudio, settings.IsAudioEncode() != 0);
  SetBit(config.m_streams, kConfigPreviewsAudio, previews_audio);
  config.m_quality = settings.GetQuarity();
  config.m_speed = speed;
  config.m_motion_sensitivity = settings.GetMoveSen();
  config.m_alarm_frames = settings.GetAlarmFrameNum();
  return config;
}

tag_CHANNELCONFIG zebx::WatermarkConfig(DWORD watermark) {
  tag_CHANNELCONFIG config = {};
  config.m_streams = kConfigHasWatermark;
  config.m_watermark = watermark;
  return config;
}

tag_CHANNELCONFIG zebx::SpeedConfig(DWORD speed) {
  tag_CHANNELCONFIG config = {};
  config.m_valid = kConfigHasSpeed;
  config.m_speed = speed;
  return config;
}

DWORD zebx::CurrentWatermark() {
  DWORD transparency = 0;
  return GetCaptureApp().GetWaterMark(&transparency) != 0 ? transparency : kNoWatermark;
}

tag_MASKAREA zebx::ToMaskArea(const CMaskInfo& mask) {
  const CRect blocks = mask.GetMBRect();
  return {static_cast<DWORD>(blocks.left), static_cast<DWORD>(blocks.top),
          static_cast<DWORD>(blocks.right), static_cast<DWORD>(blocks.bottom)};
}

tag_DEVCOLOR zebx::ToDeviceColor(const CVideoColor& color) {
  const auto value = [&color](DWORD component) {
    return LONG{color.GetValue(tag_VCLR{component})};
  };
  tag_DEVCOLOR record;
  record.m_component_0 = value(0);
  record.m_component_1 = value(1);
  record.m_component_2 = value(2);
  record.m_component_3 = value(3);
  return record;
}
