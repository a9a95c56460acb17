// Opens every camera that is there, each in a window with captions, and counts the frames that
// arrive. Without hardware the cameras come out of ZEBX_DEVICES, as in "7:4".
#include <zebx/zebx.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <list>

namespace {

struct Camera {
  tag_ZEBCAMERAID m_id;
  CShowParam m_show;
  std::atomic<DWORD> m_frames = 0;
  std::atomic<DWORD> m_bytes = 0;
};

constexpr UINT kEndTimer = 1;

// Is called on threads of the device library. `user_data` is the list of cameras, which nobody
// changes while one of them is open.
DWORD Notify(DWORD code, std::uintptr_t user_data, std::uintptr_t first, std::uintptr_t second) {
  if (code == ZEBX_MSG_FACES) {
    auto** faces = reinterpret_cast<CMoxFace**>(second);
    for (std::uintptr_t i = 0; i < first; ++i) delete faces[i];
    delete[] faces;
  } else if (code == ZEBX_MSG_FRAME) {
    // The next frame overwrites this one: a host that keeps frames copies or records them here.
    const auto* frame = reinterpret_cast<const CVideoData*>(second);
    for (Camera& camera : *reinterpret_cast<std::list<Camera>*>(user_data)) {
      if (camera.m_id != *frame->GetCameraID()) continue;
      ++camera.m_frames;
      camera.m_bytes += frame->GetVideoLength();
    }
  }
  return 0;
}

LRESULT WindowProcedure(HWND, UINT message, WPARAM wparam, LPARAM) {
  if (message == os::kWmTimer && wparam == kEndTimer) os::PostQuitMessage(0);
  return 0;
}

bool Open(Camera& camera, HWND main_window) {
  const LONG left = 352 * camera.m_id.m_camera, top = 288 * camera.m_id.m_board;
  const CString name = "Camera " + std::to_string(camera.m_id.m_camera + 1);
  CShowParam& show = camera.m_show;
  show.Create(
      os::CreateWindow(main_window, name, {left, top, left + 352, top + 288}, WindowProcedure), 0);
  show.SetBoardName("Board " + std::to_string(camera.m_id.m_board + 1));
  show.SetCameraName(name);
  show.ShowCaption(1);
  show.SetMonitor(1);
  return zebxOpenCamera(&camera.m_id, 0, nullptr, nullptr, nullptr, &show) != 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc == 2 ? std::atoi(argv[1]) : 0;
  if (seconds <= 0) {
    std::fprintf(stderr, "usage: live_cameras SECONDS\n");
    return 2;
  }
  HWND window = os::CreateWindow(nullptr, "live cameras", {0, 0, 1408, 1152}, WindowProcedure);
  std::list<Camera> cameras;
  if (zebxInitZebx(0, Notify, reinterpret_cast<std::uintptr_t>(&cameras), window, ".") == 0)
    return 1;
  for (WORD board = 0; board < zebxGetBoardNum(); ++board) {
    constexpr DWORD kLargePal = 131;
    if (zebxOpenBoard(board, kLargePal, 25) == 0) continue;
    for (WORD camera = 0; camera < zebxGetCameraNum(board); ++camera) {
      cameras.emplace_back().m_id = {board, camera};
    }
  }
  for (Camera& camera : cameras) {
    if (!Open(camera, window)) std::fprintf(stderr, "a camera does not open\n");
  }
  // How large the live pictures are, on boards that share the room for them.
  if (!cameras.empty()) zebxRefreshShow(&cameras.front().m_id);

  os::SetTimer(window, kEndTimer, static_cast<DWORD>(seconds) * 1000);
  os::Message message;
  while (os::GetMessage(&message) != 0) os::DispatchMessage(message);

  // A camera is closed before its board, and the windows go last.
  for (const Camera& camera : cameras) {
    zebxCloseCamera(&camera.m_id);
    std::printf("board %d camera %d: %u frames, %u bytes\n", camera.m_id.m_board,
                camera.m_id.m_camera, camera.m_frames.load(), camera.m_bytes.load());
  }
  zebxCloseZebx();
  os::DestroyWindow(window);
}
