#include "capture/capture_app.h"

#include <algorithm>

#include "capture/capture_board.h"
#include "capture/capture_camera.h"
#include "capture/capture_device.h"
#include "platform/zebdev/zebdev.h"

using namespace zebx;

CCaptureApp::CCaptureApp() = default;
CCaptureApp::~CCaptureApp() = default;

int CCaptureApp::Initialize(DWORD start_up_word, ZEBX_NOTIFY_PROC notify, std::uintptr_t user_data,
                            HWND host_window, const CString& device_directory) {
  if (m_is_initialized) return 1;
  if (noxdevInitialize(start_up_word, 0) != 0) return 0;
  DWORD device_count = 0;
  if (noxdevGetDeviceNum(&device_count) != 0) {
    noxdevInvalidate();
    return 0;
  }
  m_device_directory = device_directory;
  m_user_data = user_data;
  m_notify = notify;
  m_host_window = host_window;
  m_is_initialized = 1;
  m_board_count = 0;
  try {
    CreateDevices(device_count);
  } catch (...) {
    Close();
    throw;
  }
  return 1;
}

void CCaptureApp::Close() {
  for (auto& device : m_devices) device.reset();
  m_is_initialized = 0;
  m_notify = nullptr;
  m_user_data = 0;
  m_host_window = nullptr;
  m_device_directory.clear();
  m_board_count = 0;
}

CCaptureDevice* CCaptureApp::FindDevice(DWORD board) const {
  for (const auto& device : m_devices) {
    if (device != nullptr && device->Covers(board)) return device.get();
  }
  return nullptr;
}

CCaptureBoard* CCaptureApp::FindBoard(DWORD board) const {
  const CCaptureDevice* device = FindDevice(board);
  return device == nullptr ? nullptr : device->FindBoard(board);
}

std::shared_ptr<CCaptureCamera> CCaptureApp::FindCamera(const tag_ZEBCAMERAID* id) const {
  const CCaptureBoard* board = id == nullptr ? nullptr : FindBoard(id->m_board);
  return board == nullptr ? nullptr : board->FindCamera(CameraIdWord(*id));
}

void CCaptureApp::RestoreDevices() const {
  for (const auto& device : m_devices) {
    if (device != nullptr && device->GetHandle() != nullptr) noxdevRestore(device->GetHandle());
  }
}

std::optional<DWORD> CCaptureApp::CallHost(DWORD code, std::uintptr_t first,
                                           std::uintptr_t second) const {
  const ZEBX_NOTIFY_PROC notify = m_notify;
  if (notify == nullptr) return std::nullopt;
  return notify(code, m_user_data, first, second);
}

int CCaptureApp::GetWaterMark(DWORD* transparency) const {
  *transparency = m_transparency;
  return m_is_watermark_enabled;
}

void CCaptureApp::SetWaterMarkTransparency(DWORD value) {
  constexpr DWORD kLowByte = 0xFF;
  m_transparency = std::min(value & kLowByte, kMaxTransparency);
}

void CCaptureApp::CreateDevices(DWORD count) {
  DWORD stored = 0;
  for (DWORD number = 0; number < count && stored < kMaxDevices; ++number) {
    auto device = std::make_unique<CCaptureDevice>();
    if (device->Create(number, m_board_count)) m_devices[stored++] = std::move(device);
  }
}

CCaptureApp& zebx::GetCaptureApp() {
  // Never destroyed: when the process ends, the device library may be gone before.
  static auto& app = *new CCaptureApp;
  return app;
}
