// One camera of a board: one video channel of a device.
#pragma once

#include "platform/zebdev/zebdev.h"
#include "record/zeb_file_info.h"

class CCaptureBoard;

namespace zebx {

// An identity as one word: the board in the low half. Identities are compared in this form.
constexpr DWORD CameraIdWord(tag_ZEBCAMERAID id) {
  return DWORD{id.m_board} | (DWORD{id.m_camera} << 16);
}

}  // namespace zebx

// Created and owned by its board, which binds it as it opens and resets it before it destroys it.
// The host's thread only.
class CCaptureCamera {
 public:
  CCaptureCamera() = default;
  virtual ~CCaptureCamera();
  CCaptureCamera(const CCaptureCamera&) = delete;
  CCaptureCamera& operator=(const CCaptureCamera&) = delete;

  // Makes this the camera with that identity on a channel of the board's device. The board is
  // borrowed. 0, with nothing changed, without a board or while the board's device has no handle.
  int Bind(const CCaptureBoard* board, DWORD device_channel, tag_ZEBCAMERAID id);
  void ResetBinding();

  // The identity as a word; kUnbound until bound.
  DWORD GetIdWord() const { return m_id; }
  DWORD GetDeviceChannel() const { return m_device_channel; }
  NoxdevHandle GetDeviceHandle() const { return m_device; }
  const CCaptureBoard* GetBoard() const { return m_board; }

  static constexpr DWORD kUnbound = 0xFFFFFFFF;

 private:
  DWORD m_id = kUnbound;
  DWORD m_device_channel = kUnbound;
  NoxdevHandle m_device = nullptr;         // borrowed from the board's device
  const CCaptureBoard* m_board = nullptr;  // borrowed
};
