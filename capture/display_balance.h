// Which show type every camera gets on boards that have to share the room for live pictures: what a
// camera wants for its window, what a board tells of its cameras, and the choice over all boards.
// Tables of numbers only; zebx_shows.cpp asks boards and windows and carries the choice out.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/framework/geometry.h"
#include "platform/framework/types.h"
#include "record/zeb_file_info.h"

namespace zebx {

// Cameras from this index on keep their show types.
inline constexpr DWORD kBalancedCameras = 4;
// Boards below this index are picked for smaller pictures, whether they exist or not.
inline constexpr DWORD kPickedBoards = 4;

}  // namespace zebx

// What one board tells. A record of zeros stands for a board that does not exist.
struct tag_BOARDSHOWSTATE {
  BYTE m_type;  // type code, without the bit of a second board
  // Types 6 and 8: 1 when an open camera wants a large picture, else 2. Type 10: 0 when one does,
  // else 1. Other types: 0.
  BYTE m_load;
  WORD m_is_in_use;  // 0 or 1
  BYTE m_wanted[zebx::kBalancedCameras];
  BYTE m_is_open[zebx::kBalancedCameras];
};
static_assert(sizeof(tag_BOARDSHOWSTATE) == 12);

namespace zebx {

// One camera, as its board sees it.
struct CameraShow {
  bool m_is_open = false;
  bool m_has_settings = false;
  std::optional<CRect> m_window;  // none when none is set or it does not exist
};

// The show type that fits the camera's window on a board of that type code.
BYTE WantedShowType(BYTE board_type, const CameraShow& camera);

// The record of a board with those cameras, of which the first kBalancedCameras count. The type
// code may carry the bit of a second board.
tag_BOARDSHOWSTATE MakeBoardShowState(BYTE board_type, std::span<const CameraShow> cameras);

// The show types that the boards' cameras get.
struct DisplayBalance {
  // One entry per board; empty when the boards are of a type that is not balanced.
  std::vector<std::array<BYTE, kBalancedCameras>> m_show_types;
  // Boards were picked, and each has one show type for all its cameras, which is worth telling.
  bool m_has_picked = false;
};

// Chooses by the records of all boards, one for each and at least kPickedBoards of them, and the
// camera that has the focus. `board_type` decides for all boards.
DisplayBalance BalanceDisplay(std::span<const tag_BOARDSHOWSTATE> records, DWORD board_count,
                              BYTE board_type, tag_ZEBCAMERAID focus);

}  // namespace zebx
