// Plays a recording with sound into a window and saves a snapshot of every block's first picture.
#include <zebx/zebx.h>

#include <cstdio>
#include <string>

namespace {

// The picture on the screen, with where and when it was taken, as a BMP file.
void SaveSnapshot(CDecodeWnd& player, const CShowParam& show, const tag_PLAYPOS& position) {
  const CString path = "block" + std::to_string(position.m_block) + ".bmp";
  CImage image;
  if (player.GetPicture(&image) == 0) return;
  image.SetCameraName(show.GetCameraName());
  image.SetBoardName(show.GetBoardName());
  image.SetTimeStamp(position.m_time.GetTime());
  image.SaveImageAs(kImageBmp, path);  // throws when the disk refuses it
  std::printf("%s: %s\n", path.c_str(), position.m_time.Format("%Y-%m-%d %H:%M:%S").c_str());
}

}  // namespace

int main(int argc, char** argv) {
  CDecodeWnd* player = nullptr;
  CShowParam show;
  DWORD frames = 0;
  // What the player tells comes to this window, in the thread of its messages.
  const auto procedure = [&](HWND, UINT message, WPARAM code, LPARAM word) -> LRESULT {
    if (message != ZEBX_MSG_VIDEOPLAY) return 0;
    if (code == ZEBX_PLAY_CLOSED) os::PostQuitMessage(0);
    if (code == ZEBX_PLAY_FRAME) {
      ++frames;
      const auto* position = reinterpret_cast<const tag_PLAYPOS*>(word);
      if (position->m_frame == 0) SaveSnapshot(*player, show, *position);
    }
    return 0;
  };
  HWND window = os::CreateWindow(nullptr, "play recording", {0, 0, 704, 576}, procedure);
  // Players need the library, and its window.
  if (zebxInitZebx(0, nullptr, 0, window, ".") == 0) return 1;
  show.Create(window, 0);
  show.ShowCaption(1);
  bool is_open = false;
  {
    CDecodeWnd decode_window;
    player = &decode_window;
    constexpr int kRecordedSpeed = 0, kWithSound = 1;
    player->OpenDecodeWnd(window, 0, &show);
    is_open = player->OpenVideo(argc == 2 ? argv[1] : "", kRecordedSpeed, kWithSound, 0) != 0;
    os::Message message;
    while (is_open && os::GetMessage(&message) != 0) os::DispatchMessage(message);
    player->CloseVideo(0);
    player->CloseDecodeWnd();
  }
  if (is_open) {
    std::printf("%u frames played\n", frames);
  } else {
    std::fprintf(stderr, "usage: play_recording FILE.zebz (a recording with at least one block)\n");
  }
  zebxCloseZebx();
  os::DestroyWindow(window);
  return is_open ? 0 : 2;
}
