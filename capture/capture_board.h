// One board of a capture device: up to as many cameras as it has channels, all of them running at
// one frame size and speed.
#pragma once

#include <memory>
#include <vector>

#include "platform/framework/types.h"

class CCaptureCamera;
class CCaptureDevice;

namespace zebx {

// The code of the second board of a device carries this bit.
inline constexpr BYTE kSecondBoardBit = 0x80;

}  // namespace zebx

// Owned by its device. Open, it owns one camera for every channel; closed, none. The host's thread
// only.
class CCaptureBoard {
 public:
  // `board_type` is the type code with kSecondBoardBit; camera j uses the device's channel
  // channel_base + j.
  CCaptureBoard(BYTE board_type, DWORD board_index, DWORD channel_base, DWORD camera_count);
  virtual ~CCaptureBoard();
  CCaptureBoard(const CCaptureBoard&) = delete;
  CCaptureBoard& operator=(const CCaptureBoard&) = delete;

  // Creates the cameras and binds them. The device is borrowed until Close. 0, with nothing
  // changed, when the board is open already.
  int Open(const CCaptureDevice* device, DWORD frame_size, DWORD speed);
  // Destroys the cameras. Channels that still run are not stopped: close the cameras first. Cameras
  // that such channels may call are unbound and handed over.
  void Close(std::vector<std::unique_ptr<CCaptureCamera>>& left);
  bool IsOpen() const { return m_device != nullptr; }

  // The camera with that identity (CameraIdWord), or null. Borrowed; valid until Close.
  CCaptureCamera* FindCamera(DWORD id_word) const;

  // Gives the speed to every camera, unless it is the speed already.
  void SetSpeed(DWORD speed);
  bool IsAnyCameraOpen() const;

  // Null while closed.
  const CCaptureDevice* GetDevice() const { return m_device; }
  DWORD GetBoardIndex() const { return m_board_index; }
  DWORD GetChannelBase() const { return m_channel_base; }
  DWORD GetCameraCount() const { return static_cast<DWORD>(m_cameras.size()); }
  // Frame size and speed of the last opening; kNoFrameSize and 0 before the first.
  DWORD GetFrameSize() const { return m_frame_size; }
  DWORD GetSpeed() const { return m_speed; }
  BYTE GetBoardType() const { return m_board_type; }

  static constexpr DWORD kNoFrameSize = 0xFF;

 private:
  const CCaptureDevice* m_device = nullptr;
  std::vector<std::unique_ptr<CCaptureCamera>> m_cameras;  // all null while closed
  const DWORD m_board_index;
  const DWORD m_channel_base;
  DWORD m_frame_size = kNoFrameSize;
  DWORD m_speed = 0;
  const BYTE m_board_type;
};
