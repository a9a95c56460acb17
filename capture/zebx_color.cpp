// The zebx functions that bring colours to cameras and back.
#include "capture/capture_app.h"
#include "capture/capture_camera.h"
#include "capture/channel_config.h"
#include "capture/video_color.h"
#include "capture/zebx.h"

using namespace zebx;

int zebxSetVideoColor(const tag_ZEBCAMERAID* id, const CVideoColor* color) {
  const CCaptureCamera* camera = GetCaptureApp().FindCamera(id);
  if (camera == nullptr || color == nullptr) return 0;
  const tag_DEVCOLOR record = ToDeviceColor(*color);
  return noxdevChSetVideoColor(camera->GetDeviceHandle(), camera->GetDeviceChannel(), &record) == 0
             ? 1
             : 0;
}

int zebxGetVideoColor(const tag_ZEBCAMERAID* id, CVideoColor* color) {
  const CCaptureCamera* camera = GetCaptureApp().FindCamera(id);
  if (camera == nullptr || color == nullptr) return 0;
  tag_DEVCOLOR record{};
  if (noxdevChGetVideoColor(camera->GetDeviceHandle(), camera->GetDeviceChannel(), &record) != 0) {
    return 0;
  }
  // First the low 16 bits of each word, then the limits, on purpose.
  color->SetValue(static_cast<std::int16_t>(record.m_component_0), tag_VCLR{0});
  color->SetValue(static_cast<std::int16_t>(record.m_component_1), tag_VCLR{1});
  color->SetValue(static_cast<std::int16_t>(record.m_component_2), tag_VCLR{2});
  color->SetValue(static_cast<std::int16_t>(record.m_component_3), tag_VCLR{3});
  return 1;
}
