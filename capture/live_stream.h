// The live data of an open camera, and what travels with it to the channel's calls.
#pragma once

#include <atomic>

#include "capture/video_data.h"

namespace zebx {

// Lives until the camera is closed and the last call of the channel that works on it has returned.
// The frame record belongs to the channel's calls, which come one at a time; the list of masks is
// guarded by the camera's lock; the encoder settings belong to the host's calls.
struct LiveStream {
  explicit LiveStream(tag_ZEBCAMERAID camera) : m_data(camera, kWidth, kHeight) {}

  // Room for any frame, whatever the board's frame size.
  static constexpr DWORD kWidth = 640;
  static constexpr DWORD kHeight = 240;

  CVideoData m_data;
  // Asks for a new period of the rate statistics before the next frame is counted.
  std::atomic<bool> m_resets_rates = false;
};

}  // namespace zebx
