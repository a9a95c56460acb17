// The source that shows the generated street.
#include <optional>

#include "platform/zebdev/software/channel_source.h"
#include "platform/zebdev/software/dice.h"
#include "platform/zebdev/software/street_scene.h"

namespace zebx::zebdev {
namespace {

constexpr DWORD kMsPerSecond = 1000;

// The hum of a street: noise of which only the low part is left, as loud as the cars are near.
class StreetSound {
 public:
  explicit StreetSound(DWORD seed) : m_dice(Dice::Mixed(seed)) {}

  void Read(const StreetTraffic& traffic, std::span<std::int16_t> samples) {
    constexpr int kSamplesPerFrame = 8000 / StreetScene::kFramesPerSecond;
    constexpr double kQuiet = 0.05;
    constexpr int kNoise = 8000;           // times the greatest loudness, a sample holds it
    constexpr double kLowPart = 1.0 / 16;  // of each sample in the sound
    for (std::int16_t& sample : samples) {
      if (m_rest == 0) {
        m_rest = kSamplesPerFrame;
        const double target = kQuiet + traffic.Loudness(m_frame++);
        m_step = (target - m_loudness) / kSamplesPerFrame;
      }
      --m_rest;
      m_loudness += m_step;
      m_hum += kLowPart * (m_dice.Roll(2 * kNoise + 1) - kNoise - m_hum);
      sample = static_cast<std::int16_t>(m_hum * m_loudness);
    }
  }

 private:
  Dice m_dice;
  DWORD m_frame = 0;
  int m_rest = 0;  // samples of the frame that are left
  double m_loudness = 0;
  double m_step = 0;
  double m_hum = 0;
};

class StreetSource final : public ChannelSource {
 public:
  explicit StreetSource(DWORD seed) : m_seed(seed), m_traffic(seed), m_sound(seed) {}

  bool DrawPicture(ULONGLONG time_ms, noxcodec::Picture& picture) override {
    if (!m_scene || m_scene->Width() != picture.Width() || m_scene->Height() != picture.Height()) {
      m_scene.emplace(picture.Width(), picture.Height(), m_seed);
    }
    m_frame = static_cast<DWORD>(time_ms * StreetScene::kFramesPerSecond / kMsPerSecond);
    m_scene->Render(m_frame, picture);
    return true;
  }

  bool ReadSound(std::span<std::int16_t> samples) override {
    m_sound.Read(m_traffic, samples);
    return true;
  }

  std::vector<FaceArea> Faces() const override {
    std::vector<FaceArea> faces;
    if (!m_scene) return faces;
    const double across = m_scene->Width() / SceneCanvas::kWidth;
    const double down = m_scene->Height() / SceneCanvas::kHeight;
    for (const Box& head : m_traffic.Heads(m_frame)) {
      const auto left = static_cast<int>(head.left * across);
      const auto top = static_cast<int>(head.top * down);
      // Whole in packets, which round widths down.
      const int width = (static_cast<int>((head.right - head.left) * across) | 3) + 1;
      const auto height = static_cast<int>((head.bottom - head.top) * down) + 1;
      if (left < 0 || left + width > m_scene->Width()) continue;
      faces.push_back({static_cast<DWORD>(left), static_cast<DWORD>(top), static_cast<DWORD>(width),
                       static_cast<DWORD>(height)});
    }
    return faces;
  }

 private:
  DWORD m_seed;
  StreetTraffic m_traffic;
  StreetSound m_sound;
  std::optional<StreetScene> m_scene;  // of the picture size asked for last
  DWORD m_frame = 0;                   // drawn last
};

}  // namespace

std::unique_ptr<ChannelSource> MakeStreetSource(DWORD seed) {
  return std::make_unique<StreetSource>(seed);
}

}  // namespace zebx::zebdev
