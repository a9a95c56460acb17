// Presenting of a live picture with captions and five masks, next to copying the bytes of its
// window, or of the picture where that is larger: all of it is read.
#include <algorithm>
#include <cstring>
#include <vector>

#include "bench/compare.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/streams.h"
#include "platform/os/windows/windows.h"

namespace {

using namespace zebx::noxdisplay;

tag_DISPLAYINFO LiveRecord() {
  tag_DISPLAYINFO info = {};
  info.m_flags = kShowCameraName | kShowBoardName | kShowClock | kShowBeginTime | kShowMasks |
                 kShowSmooth | kShowRecord | kShowActive;
  std::strcpy(info.m_camera_name, "T\u00fcr 3 \u2013 Empfang");
  std::strcpy(info.m_board_name, "Board 1");
  std::strcpy(info.m_clock, "12:34:56");
  std::strcpy(info.m_begin_time, "12:00:00");
  info.m_camera_name_color = info.m_board_name_color = info.m_clock_color = 0x00FFFF00;
  info.m_encode_width = 352;
  info.m_encode_height = 288;
  info.m_mask_count = kDisplayMasks;
  for (LONG i = 0; i < static_cast<LONG>(kDisplayMasks); ++i) {
    info.m_masks[i] = {4 * i, 2 * i, 4 * i + 5, 2 * i + 8, static_cast<DWORD>(i)};
  }
  return info;
}

// Width of the stream's picture and of the window; heights go with them.
void PresentLivePicture(benchmark::State& state) {
  const auto width = static_cast<LONG>(state.range(0));
  const auto window_width = static_cast<LONG>(state.range(1));
  const LONG height = width * 9 / 11;
  const LONG window_height = window_width * 9 / 11;
  const NoxshowSize size = {static_cast<DWORD>(width), static_cast<DWORD>(height)};
  const tag_DISPLAYINFO info = LiveRecord();
  NoxshowStream stream = nullptr;
  Require(noxshowCreateStream(&stream, &size, kNoxshowOverlaySurface, &info) == 0, "no stream");
  tag_SURFACELOCK lock = {};
  Require(noxshowLock(stream, &lock) == 0, "no surface");
  const auto bytes = static_cast<std::size_t>(width * height) * 4;
  for (std::size_t i = 0; i < bytes; ++i) lock.m_pixels[i] = static_cast<BYTE>(i * i >> 7);
  noxshowUnlock(stream);
  HWND window = os::CreateWindow(nullptr, "live", {0, 0, window_width, window_height},
                                 [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; });

  const auto window_bytes = static_cast<std::size_t>(window_width * window_height) * 4;
  std::vector<BYTE> from(std::max(window_bytes, bytes), 1);
  std::vector<BYTE> to(from.size());
  Compare(
      state, static_cast<double>(from.size()),
      [&] { Require(noxshowDisplay(stream, window, &info) == 0, "not presented"); },
      [&] {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
      });
  os::DestroyWindow(window);
  noxshowDestroyStream(stream);
}
BENCHMARK(PresentLivePicture)
    ->ArgNames({"picture", "window"})
    ->Args({704, 704})
    ->Args({352, 352})
    ->Args({352, 704})
    ->Args({176, 352})
    ->Args({704, 352})
    ->Args({352, 176})
    ->UseManualTime();

}  // namespace
