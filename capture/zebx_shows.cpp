// The zebx functions that choose how large a picture each camera of a board previews.
#include <algorithm>
#include <memory>
#include <vector>

#include "capture/capture_app.h"
#include "capture/capture_board.h"
#include "capture/capture_camera.h"
#include "capture/display_balance.h"
#include "capture/guarded.h"
#include "capture/show_param.h"
#include "capture/zebx.h"
#include "platform/os/debug_output.h"
#include "platform/os/windows/windows.h"

using namespace zebx;

namespace {

// Null while the board is closed, too.
std::shared_ptr<CCaptureCamera> FindCamera(DWORD board, DWORD camera) {
  const tag_ZEBCAMERAID id = {static_cast<WORD>(board), static_cast<WORD>(camera)};
  return GetCaptureApp().FindCamera(&id);
}

CameraShow LookAt(const CCaptureCamera& camera) {
  CameraShow look;
  look.m_is_open = camera.IsOpen();
  const CShowParam* show = camera.GetShowParam();
  if (show == nullptr) return look;
  look.m_has_settings = true;
  CRect window;
  if (os::GetWindowRect(show->GetWnd(), &window) != 0) look.m_window = window;
  return look;
}

tag_BOARDSHOWSTATE LookAt(const CCaptureBoard& board) {
  std::vector<CameraShow> cameras(std::min(board.GetCameraCount(), kBalancedCameras));
  for (DWORD j = 0; j < cameras.size(); ++j) {
    const auto camera = FindCamera(board.GetBoardIndex(), j);
    if (camera != nullptr) cameras[j] = LookAt(*camera);
  }
  return MakeBoardShowState(board.GetBoardType(), cameras);
}

int RefreshShow(tag_ZEBCAMERAID focus) {
  const CCaptureApp& app = GetCaptureApp();
  const DWORD board_count = app.GetBoardCount();
  if (board_count == 0) return 1;

  std::vector<tag_BOARDSHOWSTATE> records(std::max(board_count, kPickedBoards));
  BYTE board_type = 0;
  for (DWORD b = 0; b < board_count; ++b) {
    const CCaptureBoard* board = app.FindBoard(b);
    if (board == nullptr) continue;
    records[b] = LookAt(*board);
    board_type = records[b].m_type;  // the last board's decides for all of them
  }
  if (board_type == 0) return 0;

  const DisplayBalance balance = BalanceDisplay(records, board_count, board_type, focus);
  for (DWORD b = 0; b < balance.m_show_types.size(); ++b) {
    const auto& show_types = balance.m_show_types[b];
    if (balance.m_has_picked) {
      os::OutputDebugString("BoardIndex " + std::to_string(b) + " = " +
                            std::to_string(show_types[0]) + "\n");
    }
    for (DWORD j = 0; j < show_types.size(); ++j) {
      const auto camera = FindCamera(b, j);
      if (camera != nullptr) camera->SetShowType(show_types[j]);
    }
  }
  return 1;
}

}  // namespace

int zebxRefreshShow(const tag_ZEBCAMERAID* focus) {
  return focus == nullptr ? 0 : Guarded([&] { return RefreshShow(*focus); });
}
