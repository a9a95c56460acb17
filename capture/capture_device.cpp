#include "capture/capture_device.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <iterator>
#include <new>
#include <optional>

#include "capture/capture_camera.h"

using namespace zebx;

namespace {

constexpr DWORD kChannelsOfTwoBoards = 8;

// Devices of these types know only once they are open what they can do.
constexpr DWORD kLateTypes[] = {0x080, 0x800};

// The type code of a device's first board: the position of its type bit, 0 for what is no type.
BYTE BoardTypeCode(DWORD device_type) {
  constexpr DWORD kLastType = 0x800;
  if (!std::has_single_bit(device_type) || device_type > kLastType) return 0;
  return static_cast<BYTE>(std::countr_zero(device_type));
}

// The frame sizes in which a device starts, and the open mode of each.
constexpr struct {
  DWORD m_frame_size;
  DWORD m_mode;
} kOpenModes[] = {{3, 3}, {7, 1}, {131, 2}, {135, 0}};

std::optional<DWORD> OpenMode(DWORD frame_size) {
  for (const auto& entry : kOpenModes) {
    if (entry.m_frame_size == frame_size) return entry.m_mode;
  }
  return std::nullopt;
}

// Takes no memory, as nothing that closes does.
void KeepForever(CameraList& cameras) {
  alignas(CameraList) static std::byte place[sizeof(CameraList)];
  static auto& kept = *new (place) CameraList;
  kept.splice(kept.end(), cameras);
}

}  // namespace

CCaptureDevice::CCaptureDevice() = default;

CCaptureDevice::~CCaptureDevice() {
  Close();
}

int CCaptureDevice::Create(DWORD number, DWORD& board_count) {
  if (m_handle != nullptr) return 0;
  NoxdevHandle handle = nullptr;
  if (noxdevCreateDevice(&handle, number) != 0) return 0;
  if (noxdevGetDeviceCap(handle, &m_capability) != 0) {
    noxdevDestroyDevice(handle);
    return 0;
  }
  m_handle = handle;
  const DWORD channels = m_capability.m_channels & zebdev::kDeviceChannelsMask;
  m_board_count = channels == kChannelsOfTwoBoards ? 2 : 1;
  m_first_board = board_count;
  BYTE board_type = BoardTypeCode(m_capability.m_device_type);
  for (DWORD i = 0; i < m_board_count; ++i) {
    if (i > 0) board_type |= kSecondBoardBit;
    m_boards[i] = std::make_unique<CCaptureBoard>(board_type, m_first_board + i,
                                                  kChannelsPerBoard * i, channels / m_board_count);
  }
  board_count += m_board_count;
  return 1;
}

void CCaptureDevice::Close() {
  for (DWORD i = 0; i < m_board_count; ++i) CloseBoard(m_first_board + i);
  for (auto& board : m_boards) board.reset();
  if (m_handle == nullptr) return;
  const bool is_destroyed = noxdevDestroyDevice(m_handle) == 0;
  m_handle = nullptr;
  // A device that could not be destroyed may call for ever.
  if (!is_destroyed) KeepForever(m_left_cameras);
  m_left_cameras.clear();
}

int CCaptureDevice::OpenBoard(DWORD board, DWORD frame_size, DWORD speed,
                              const CString& directory) {
  if (m_handle == nullptr || !Covers(board)) return 0;
  CCaptureBoard* found = FindBoard(board);
  if (found == nullptr) return 0;
  const bool is_first = !IsAnyBoardOpen();
  if (is_first && !Start(frame_size, directory)) return 0;
  try {
    found->Open(this, frame_size, speed);
  } catch (...) {
    if (is_first) noxdevCloseDevice(m_handle);
    throw;
  }
  return 1;
}

int CCaptureDevice::CloseBoard(DWORD board) {
  if (m_handle == nullptr) return 1;
  CCaptureBoard* found = FindBoard(board);
  if (!Covers(board) || found == nullptr) return 0;
  if (IsAnyBoardOpen()) {
    found->Close(m_left_cameras);
    if (!IsAnyBoardOpen()) noxdevCloseDevice(m_handle);
  }
  return 1;
}

bool CCaptureDevice::Covers(DWORD board) const {
  return board >= m_first_board && board - m_first_board < m_board_count;
}

CCaptureBoard* CCaptureDevice::FindBoard(DWORD board) const {
  for (const auto& candidate : m_boards) {
    if (candidate != nullptr && candidate->GetBoardIndex() == board) return candidate.get();
  }
  return nullptr;
}

bool CCaptureDevice::IsAnyBoardOpen() const {
  return std::any_of(m_boards.begin(), m_boards.end(),
                     [](const auto& board) { return board != nullptr && board->IsOpen(); });
}

bool CCaptureDevice::Start(DWORD frame_size, const CString& directory) {
  const std::optional<DWORD> mode = OpenMode(frame_size);
  if (!mode) return false;
  if (noxdevOpenDevice(m_handle, *mode, (directory + "\\").c_str()) != 0) return false;
  const bool is_late = std::find(std::begin(kLateTypes), std::end(kLateTypes),
                                 m_capability.m_device_type) != std::end(kLateTypes);
  // When it fails, what the device told before still holds.
  if (is_late) noxdevGetDeviceCap(m_handle, &m_capability);
  return true;
}
