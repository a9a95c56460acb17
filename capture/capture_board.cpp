#include "capture/capture_board.h"

#include <algorithm>

#include "capture/capture_camera.h"

using namespace zebx;

CCaptureBoard::CCaptureBoard(BYTE board_type, DWORD board_index, DWORD channel_base,
                             DWORD camera_count)
    : m_board_index(board_index),
      m_channel_base(channel_base),
      m_camera_count(camera_count),
      m_board_type(board_type) {}

CCaptureBoard::~CCaptureBoard() = default;

int CCaptureBoard::Open(const CCaptureDevice* device, DWORD frame_size, DWORD speed) {
  if (IsOpen()) return 0;
  CameraList cameras;
  for (DWORD j = 0; j < m_camera_count; ++j) cameras.push_back(std::make_shared<CCaptureCamera>());
  m_device = device;
  m_frame_size = frame_size;
  m_speed = speed;
  m_cameras.swap(cameras);
  WORD j = 0;
  for (const auto& camera : m_cameras) {
    camera->Bind(this, m_channel_base + j, {static_cast<WORD>(m_board_index), j});
    ++j;
  }
  return 1;
}

void CCaptureBoard::Close(CameraList& left) {
  m_device = nullptr;
  for (const auto& camera : m_cameras) camera->ResetBinding();
  std::erase_if(m_cameras, [](const auto& camera) { return !camera->MayBeCalled(); });
  left.splice(left.end(), m_cameras);
}

void CCaptureBoard::SetSpeed(DWORD speed) {
  if (speed == m_speed) return;
  m_speed = speed;
  for (const auto& camera : m_cameras) camera->SetSpeed(speed);
}

bool CCaptureBoard::IsAnyCameraOpen() const {
  return std::ranges::any_of(m_cameras, [](const auto& camera) { return camera->IsOpen(); });
}

std::shared_ptr<CCaptureCamera> CCaptureBoard::FindCamera(DWORD id_word) const {
  for (const auto& camera : m_cameras) {
    if (camera->GetIdWord() == id_word) return camera;
  }
  return nullptr;
}
