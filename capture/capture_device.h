// One device of the device library, with the one or two boards that it carries.
#pragma once

#include <array>
#include <memory>

#include "capture/capture_board.h"
#include "platform/zebdev/zebdev.h"

// Owned by CCaptureApp. Owns its boards and its handle; the device runs while at least one of its
// boards is open. Cameras that were open when their board closed belong to it until its handle is
// given back, since their channels may call them until then. The host's thread only.
//
//   no handle --Create--> closed --OpenBoard, first board--> running (1 board)
//       ^                  ^   ^                               |       |  ^
//       +------Close-------+   +------CloseBoard, last board---+    OpenBoard, CloseBoard
//                                                                      v  |
//                                                              running (2 boards)
class CCaptureDevice {
 public:
  CCaptureDevice();
  // Closes.
  virtual ~CCaptureDevice();
  CCaptureDevice(const CCaptureDevice&) = delete;
  CCaptureDevice& operator=(const CCaptureDevice&) = delete;

  // Takes hold of the device with that number and creates its boards, numbered on from
  // `board_count`, which grows by their number. 0, with `board_count` as it was, when there is a
  // handle already or the device cannot be created or does not tell its capability. Throws
  // std::bad_alloc, with `board_count` as it was.
  int Create(DWORD number, DWORD& board_count);
  // Closes and destroys the boards and gives the handle back.
  void Close();

  // Opens a board; `directory` is the device directory without its last backslash. The first board
  // of the device starts the device and takes one of four frame sizes; the other one may then take
  // any. 0 without a handle, for a board elsewhere, for another frame size on the first, and when
  // the device does not start. Opening an open board answers 1 and changes nothing. Throws
  // std::bad_alloc, with nothing changed.
  int OpenBoard(DWORD board, DWORD frame_size, DWORD speed, const CString& directory);
  // Closes a board, and the device with its last open one. 0 for a board elsewhere; a closed board
  // and a device without a handle are no failure.
  int CloseBoard(DWORD board);

  bool Covers(DWORD board) const;
  bool IsFirstBoard(DWORD board) const { return board == m_first_board; }
  // The board with that index, or null. Borrowed; valid until Close.
  CCaptureBoard* FindBoard(DWORD board) const;

  NoxdevHandle GetHandle() const { return m_handle; }
  const tag_DEVICECAP& GetCapability() const { return m_capability; }

  static constexpr DWORD kNoBoard = 0xFFFFFFFF;
  // The second board's channels start behind so many of the first one's.
  static constexpr DWORD kChannelsPerBoard = 4;

 private:
  bool IsAnyBoardOpen() const;
  bool Start(DWORD frame_size, const CString& directory);

  DWORD m_board_count = 0;
  DWORD m_first_board = kNoBoard;
  std::array<std::unique_ptr<CCaptureBoard>, 2> m_boards;
  NoxdevHandle m_handle = nullptr;
  tag_DEVICECAP m_capability = {};
  zebx::CameraList m_left_cameras;
};
