#include "platform/zebdev/software/street_scene.h"

#include <algorithm>
#include <cstdint>

#include "platform/zebdev/software/dice.h"
#include "platform/zebdev/software/scene_canvas.h"
#include "platform/zebdev/software/street_scenery.h"

namespace zebx::zebdev {
namespace {

using noxcodec::MutablePlaneView;
using noxcodec::Picture;

constexpr DWORD kNoiseSeed = 77;
constexpr std::size_t kNoiseBytes = 1 << 16;

}  // namespace

StreetScene::StreetScene(int width, int height, DWORD seed)
    : m_background(width, height), m_traffic(seed) {
  PaintScenery(m_background, seed);

  // The sum of three small dice is close enough to a sensor's bell curve.
  Dice noise(kNoiseSeed);
  m_noise.resize(kNoiseBytes + static_cast<std::size_t>(width));
  for (std::int8_t& value : m_noise) {
    value = static_cast<std::int8_t>((noise.Roll(4) + noise.Roll(4) + noise.Roll(4) - 4) / 2);
  }
}

void StreetScene::Render(DWORD frame_number, Picture& target) const {
  target = m_background;
  SceneCanvas canvas(target);
  m_traffic.Paint(canvas, frame_number);
  AddNoise(frame_number, target);
}

// Each row takes its noise from another place of the table, chosen by the frame.
void StreetScene::AddNoise(DWORD frame_number, Picture& target) const {
  Dice dice(kNoiseSeed ^ (frame_number * 2654435761U));
  const MutablePlaneView luma = target.Plane(noxcodec::kLuma);
  for (int y = 0; y < luma.height; ++y) {
    const std::int8_t* const noise = m_noise.data() + dice.Roll(static_cast<int>(kNoiseBytes));
    BYTE* const row = luma.Row(y);
    for (int x = 0; x < luma.width; ++x) {
      row[x] = static_cast<BYTE>(std::clamp(row[x] + noise[x], 0, 255));
    }
  }
}

}  // namespace zebx::zebdev
