#include "capture/capture_camera.h"

#include "capture/capture_board.h"
#include "capture/capture_device.h"
#include "capture/channel_config.h"
#include "capture/live_stream.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/picture_formats.h"
#include "capture/video_color.h"
#include "image/image.h"
#include "record/zeb_frame_data.h"

using namespace zebx;

CCaptureCamera::CCaptureCamera() = default;

CCaptureCamera::~CCaptureCamera() = default;

int CCaptureCamera::Bind(const CCaptureBoard* board, DWORD device_channel, tag_ZEBCAMERAID id) {
  if (board == nullptr || board->GetDevice() == nullptr) return 0;
  NoxdevHandle device = board->GetDevice()->GetHandle();
  if (device == nullptr) return 0;
  const std::lock_guard lock(m_mutex);
  m_id = CameraIdWord(id);
  m_device_channel = device_channel;
  m_device = device;
  m_board = board;
  return 1;
}

void CCaptureCamera::ResetBinding() {
  const std::lock_guard lock(m_mutex);
  m_id = kUnbound;
  m_device_channel = kUnbound;
  m_device = nullptr;
  m_board = nullptr;
}

int CCaptureCamera::SetShowParam(CShowParam* show) {
  if (m_board == nullptr) return 0;
  const std::lock_guard lock(m_mutex);
  m_show = show;
  return 1;
}

bool CCaptureCamera::IsOpen() const {
  return GetLive() != nullptr;
}

CCaptureCamera::Live CCaptureCamera::GetLive() const {
  const std::lock_guard lock(m_mutex);
  return m_live;
}

int CCaptureCamera::SetShowType(DWORD show_type) {
  noxdevChChangeShow(m_device, m_device_channel, show_type);
  return 1;
}

int CCaptureCamera::AddMask(CMaskInfo* mask) {
  const Live live = GetLive();
  if (live == nullptr || mask == nullptr) return 0;
  CMaskList& own = *live->m_data.GetMaskList();
  // Made before the device has the area, which could not be taken back alone.
  CObList longer;
  for (CObject* entry : own) longer.AddTail(entry);
  if (own.IsMaskInfo(mask) == 0) longer.AddTail(mask);
  const tag_MASKAREA area = ToMaskArea(*mask);
  if (noxdevChAddMaskArea(m_device, m_device_channel, &area) != 0) return 0;
  const std::lock_guard lock(m_mutex);
  own.CObList::Swap(longer);
  return 1;
}

int CCaptureCamera::DeleteAllMasks() {
  const Live live = GetLive();
  if (live == nullptr || live->m_data.GetMaskList()->IsEmpty()) return 1;
  noxdevChClearMaskArea(m_device, m_device_channel);
  CMaskList removed;  // destroyed without the lock
  const std::lock_guard lock(m_mutex);
  live->m_data.GetMaskList()->Swap(removed);
  return 1;
}

int CCaptureCamera::SetColor(const CVideoColor& color) const {
  const tag_DEVCOLOR record = ToDeviceColor(color);
  return noxdevChSetVideoColor(m_device, m_device_channel, &record) == 0 ? 1 : 0;
}

int CCaptureCamera::GetColor(CVideoColor& color) const {
  tag_DEVCOLOR record{};
  if (noxdevChGetVideoColor(m_device, m_device_channel, &record) != 0) return 0;
  const LONG words[] = {record.m_component_0, record.m_component_1, record.m_component_2,
                        record.m_component_3};
  // First the low 16 bits of each word, then the limits, on purpose.
  DWORD component = 0;
  for (const LONG word : words) {
    color.SetValue(static_cast<std::int16_t>(word), tag_VCLR{component++});
  }
  return 1;
}

int CCaptureCamera::GetPicture(CImage* image) const {
  constexpr ULONGLONG kPixelBytes = 3;
  constexpr DWORD kBottomUp24Bits = 1;
  DWORD width = 0;
  DWORD height = 0;
  if (image == nullptr || !zebxGetShowSize(m_board->GetFrameSize(), &width, &height)) return 0;
  auto pixels = std::make_unique<BYTE[]>(kPixelBytes * width * height);
  const CRect whole{0, 0, static_cast<LONG>(width), static_cast<LONG>(height)};
  const LONG row_step = -static_cast<LONG>(kPixelBytes * width);
  if (noxdevChCapturePicture(m_device, m_device_channel, pixels.get(), &whole, row_step,
                             kBottomUp24Bits) != 0) {
    return 0;
  }
  return image->CreateImage(pixels.release(), width, height);
}

int CCaptureCamera::GetAlarmData(CZebFile* file) const {
  if (file == nullptr) return 0;
  CZebFrameData scratch;
  return noxdevChEnumPreAlarmData(m_device, m_device_channel,
                                  reinterpret_cast<std::uintptr_t>(file),
                                  reinterpret_cast<std::uintptr_t>(&scratch)) == 0
             ? 1
             : 0;
}
