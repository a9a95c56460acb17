#include "capture/capture_camera.h"

#include "capture/capture_board.h"
#include "capture/capture_device.h"

using namespace zebx;

CCaptureCamera::~CCaptureCamera() = default;

int CCaptureCamera::Bind(const CCaptureBoard* board, DWORD device_channel, tag_ZEBCAMERAID id) {
  if (board == nullptr || board->GetDevice() == nullptr) return 0;
  NoxdevHandle device = board->GetDevice()->GetHandle();
  if (device == nullptr) return 0;
  m_id = CameraIdWord(id);
  m_device_channel = device_channel;
  m_device = device;
  m_board = board;
  return 1;
}

void CCaptureCamera::ResetBinding() {
  m_id = kUnbound;
  m_device_channel = kUnbound;
  m_device = nullptr;
  m_board = nullptr;
}
