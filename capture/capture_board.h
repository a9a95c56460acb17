// One board of a capture device: up to as many cameras as it has channels, all of them running at
// one frame size and speed.
#pragma once

#include <list>
#include <memory>

#include "platform/framework/types.h"

class CCaptureCamera;
class CCaptureDevice;

namespace zebx {

// The code of the second board of a device carries this bit.
inline constexpr BYTE kSecondBoardBit = 0x80;

// Shared with the host's calls that are under way: what comes in while one of them waits for a
// channel may close the board. Moving cameras from list to list takes no memory.
using CameraList = std::list<std::shared_ptr<CCaptureCamera>>;

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
  // changed, when the board is open already. Throws std::bad_alloc, with nothing changed.
  int Open(const CCaptureDevice* device, DWORD frame_size, DWORD speed);
  // Lets go of the cameras. Channels that still run are not stopped: close the cameras first.
  // Cameras that such channels may call are unbound and appended to `left`.
  void Close(zebx::CameraList& left);
  bool IsOpen() const { return m_device != nullptr; }

  // The camera with that identity (CameraIdWord), or null.
  std::shared_ptr<CCaptureCamera> FindCamera(DWORD id_word) const;

  // Gives the speed to every camera, unless it is the speed already.
  void SetSpeed(DWORD speed);
  bool IsAnyCameraOpen() const;

  // Null while closed.
  const CCaptureDevice* GetDevice() const { return m_device; }
  DWORD GetBoardIndex() const { return m_board_index; }
  DWORD GetChannelBase() const { return m_channel_base; }
  DWORD GetCameraCount() const { return m_camera_count; }
  // Frame size and speed of the last opening; kNoFrameSize and 0 before the first.
  DWORD GetFrameSize() const { return m_frame_size; }
  DWORD GetSpeed() const { return m_speed; }
  BYTE GetBoardType() const { return m_board_type; }

  static constexpr DWORD kNoFrameSize = 0xFF;

 private:
  const CCaptureDevice* m_device = nullptr;
  zebx::CameraList m_cameras;  // empty while closed
  const DWORD m_board_index;
  const DWORD m_channel_base;
  const DWORD m_camera_count;
  DWORD m_frame_size = kNoFrameSize;
  DWORD m_speed = 0;
  const BYTE m_board_type;
};
