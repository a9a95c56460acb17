#include "capture/zebx.h"

#include "capture/capture_app.h"
#include "capture/capture_board.h"
#include "capture/capture_device.h"
#include "capture/guarded.h"
#include "platform/zebdev/zebdev.h"

using namespace zebx;

namespace {

constexpr DWORD kNoStreamIndex = 0xFFFFFFFF;

const CCaptureBoard* FindBoard(WORD board) {
  return GetCaptureApp().FindBoard(board);
}

// The device whose first board this is; null for any other board.
const CCaptureDevice* FindDeviceByFirstBoard(WORD board) {
  const CCaptureDevice* device = GetCaptureApp().FindDevice(board);
  return device != nullptr && device->IsFirstBoard(board) ? device : nullptr;
}

}  // namespace

int zebxInitZebx(DWORD start_up_word, ZEBX_NOTIFY_PROC notify, std::uintptr_t user_data,
                 HWND host_window, const char* device_directory) {
  return Guarded([&] {
    return GetCaptureApp().Initialize(start_up_word, notify, user_data, host_window,
                                      device_directory == nullptr ? "" : device_directory);
  });
}

void zebxCloseZebx() {
  GetCaptureApp().Close();
}

int zebxIsZebxInit() {
  return GetCaptureApp().IsInitialized();
}

DWORD zebxGetBoardNum() {
  return GetCaptureApp().GetBoardCount();
}

DWORD zebxGetCameraNum(WORD board) {
  const CCaptureBoard* found = FindBoard(board);
  return found == nullptr ? 0 : found->GetCameraCount();
}

DWORD zebxGetTotalCamera() {
  DWORD total = 0;
  for (DWORD board = 0; board < zebxGetBoardNum(); ++board) {
    total += zebxGetCameraNum(static_cast<WORD>(board));
  }
  return total;
}

int zebxIsValidBoardIndex(WORD board) {
  return zebxIsZebxInit() && board < zebxGetBoardNum() ? 1 : 0;
}

int zebxIsValidCameraID(const tag_ZEBCAMERAID* id) {
  const CCaptureDevice* device = id == nullptr ? nullptr : GetCaptureApp().FindDevice(id->m_board);
  if (device == nullptr) return 0;
  const DWORD base = device->IsFirstBoard(id->m_board) ? 0 : CCaptureDevice::kChannelsPerBoard;
  int is_valid = 0;
  return noxdevChIsValidID(device->GetHandle(), base + id->m_camera, &is_valid) == 0 ? is_valid : 0;
}

int zebxOpenBoard(WORD board, DWORD frame_size, DWORD speed) {
  const CCaptureApp& app = GetCaptureApp();
  CCaptureDevice* device = app.IsInitialized() ? app.FindDevice(board) : nullptr;
  if (device == nullptr) return 0;
  return Guarded(
      [&] { return device->OpenBoard(board, frame_size, speed, app.GetDeviceDirectory()); });
}

int zebxCloseBoard(WORD board) {
  CCaptureDevice* device = GetCaptureApp().FindDevice(board);
  return device == nullptr ? 0 : device->CloseBoard(board);
}

int zebxIsBoardOpen(WORD board) {
  const CCaptureBoard* found = zebxIsZebxInit() ? FindBoard(board) : nullptr;
  return found != nullptr && found->IsOpen() ? 1 : 0;
}

int zebxGetFrameSize(WORD board, DWORD* frame_size) {
  const CCaptureBoard* found = FindBoard(board);
  if (found == nullptr || frame_size == nullptr) return 0;
  *frame_size = found->GetFrameSize();
  return 1;
}

int zebxGetSpeed(WORD board, DWORD* speed) {
  const CCaptureBoard* found = FindBoard(board);
  if (found == nullptr || speed == nullptr) return 0;
  *speed = found->GetSpeed();
  return 1;
}

int zebxSetSpeed(WORD board, DWORD speed) {
  CCaptureBoard* found = GetCaptureApp().FindBoard(board);
  if (found == nullptr) return 0;
  found->SetSpeed(speed);
  return 1;
}

BYTE zebxGetBoardType(WORD board) {
  const CCaptureBoard* found = FindBoard(board);
  return found == nullptr ? BYTE{0} : found->GetBoardType();
}

DWORD zebxGet8PortStreamIndex(WORD board) {
  const CCaptureBoard* found = FindBoard(board);
  if (found == nullptr) return kNoStreamIndex;
  return found->GetChannelBase() != 0 ? 1 : 0;
}

int zebxIsTVSupport(WORD board) {
  const CCaptureDevice* device = FindDeviceByFirstBoard(board);
  return device == nullptr ? 0 : device->GetCapability().m_tv & zebdev::kDeviceTvBit;
}

int zebxIsWatchDog(WORD board) {
  const CCaptureDevice* device = FindDeviceByFirstBoard(board);
  return device == nullptr ? 0 : device->GetCapability().m_watchdog & zebdev::kDeviceWatchdogBit;
}

int zebxIsIOSupport(WORD board) {
  const CCaptureDevice* device = FindDeviceByFirstBoard(board);
  if (device == nullptr) return 0;
  return (device->GetCapability().m_io_ports & zebdev::kDeviceIoPortsMask) != 0 ? 1 : 0;
}

int zebxSetTVOut(WORD board, DWORD first, DWORD second) {
  const CCaptureDevice* device = FindDeviceByFirstBoard(board);
  if (device == nullptr) return 0;
  return noxdevSetTVOut(device->GetHandle(), first, second) == 0 ? 1 : 0;
}

int zebxIOCtrl(WORD board, BYTE code, DWORD first, DWORD second) {
  const CCaptureDevice* device = FindDeviceByFirstBoard(board);
  if (device == nullptr) return 0;
  return noxdevIOCtl(device->GetHandle(), code, first, second) == 0 ? 1 : 0;
}

int zebxEnableWaterMark(int is_enabled) {
  GetCaptureApp().EnableWaterMark(is_enabled);
  return 1;
}

int zebxSetWaterMarkTrans(DWORD transparency) {
  GetCaptureApp().SetWaterMarkTransparency(transparency);
  return 1;
}
