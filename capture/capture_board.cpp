#include "capture/capture_board.h"

#include <algorithm>
#include <utility>

#include "capture/capture_camera.h"

CCaptureBoard::CCaptureBoard(BYTE board_type, DWORD board_index, DWORD channel_base,
                             DWORD camera_count)
    : m_cameras(camera_count),
      m_board_index(board_index),
      m_channel_base(channel_base),
      m_board_type(board_type) {}

CCaptureBoard::~CCaptureBoard() = default;

int CCaptureBoard::Open(const CCaptureDevice* device, DWORD frame_size, DWORD speed) {
  if (IsOpen()) return 0;
  m_device = device;
  m_frame_size = frame_size;
  m_speed = speed;
  for (DWORD j = 0; j < GetCameraCount(); ++j) {
    m_cameras[j] = std::make_unique<CCaptureCamera>();
    m_cameras[j]->Bind(this, m_channel_base + j,
                       {static_cast<WORD>(m_board_index), static_cast<WORD>(j)});
  }
  return 1;
}

void CCaptureBoard::Close(std::vector<std::unique_ptr<CCaptureCamera>>& left) {
  m_device = nullptr;
  for (auto& camera : m_cameras) {
    if (camera == nullptr) continue;
    camera->ResetBinding();
    if (camera->MayBeCalled()) left.push_back(std::move(camera));
    camera.reset();
  }
}

void CCaptureBoard::SetSpeed(DWORD speed) {
  if (speed == m_speed) return;
  m_speed = speed;
  for (const auto& camera : m_cameras) {
    if (camera != nullptr) camera->SetSpeed(speed);
  }
}

bool CCaptureBoard::IsAnyCameraOpen() const {
  return std::any_of(m_cameras.begin(), m_cameras.end(),
                     [](const auto& camera) { return camera != nullptr && camera->IsOpen(); });
}

CCaptureCamera* CCaptureBoard::FindCamera(DWORD id_word) const {
  for (const auto& camera : m_cameras) {
    if (camera != nullptr && camera->GetIdWord() == id_word) return camera.get();
  }
  return nullptr;
}
