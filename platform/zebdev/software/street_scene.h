// A generated street: what a virtual camera sees when it has no recording to show.
#pragma once

#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/zebdev/software/street_traffic.h"

namespace zebx::zebdev {

// Houses, trees and lamp posts along a road, with cars and people passing at their own speeds, and
// the mild noise of a camera. The same size, seed and frame number always give the same picture.
// Const operations may run in several threads at once.
class ZEBX_API StreetScene {
 public:
  // Frames in a second of the scene's movements.
  static constexpr int kFramesPerSecond = 25;

  // `width` and `height` of the pictures are positive. Streets of different seeds look different
  // and have other traffic.
  StreetScene(int width, int height, DWORD seed = 0);

  int Width() const { return m_background.Width(); }
  int Height() const { return m_background.Height(); }

  // Draws the picture of the frame into `target`, which takes the scene's size if it has another.
  void Render(DWORD frame_number, noxcodec::Picture& target) const;

 private:
  void AddNoise(DWORD frame_number, noxcodec::Picture& target) const;

  noxcodec::Picture m_background;
  StreetTraffic m_traffic;
  std::vector<std::int8_t> m_noise;
};

}  // namespace zebx::zebdev
