#include "platform/zebdev/software/picture_colour.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace zebx::zebdev {
namespace {

constexpr LONG kMinHue = -128;
constexpr LONG kMaxHue = 127;
constexpr LONG kMaxBrightness = 255;
constexpr LONG kMaxOther = 127;

constexpr DWORD kLastDeviceType = 0x800;
constexpr DWORD kFirstFineType = 0x100;  // from here on the converters are the finer ones

// In the record's order: brightness, contrast, saturation, hue.
constexpr tag_DEVCOLOR kFinePal = {128, 64, 64, 0};
constexpr tag_DEVCOLOR kFineNtsc = {128, 68, 60, 0};
constexpr tag_DEVCOLOR kPlainPal = {124, 66, 68, 0};
constexpr tag_DEVCOLOR kPlainNtsc = {120, 70, 64, 0};

constexpr int kUnit = 256;           // 1 in the fixed-point numbers of chroma
constexpr double kMiddleGrey = 126;  // what contrast turns around
constexpr int kNoColour = 128;

// How much of `neutral` there is in `value`; a neutral of 0 stands for the smallest step.
double Ratio(LONG value, LONG neutral) {
  return double{1} * value / std::max<LONG>(neutral, 1);
}

BYTE Limited(int value) {
  return static_cast<BYTE>(std::clamp(value, 0, 255));
}

}  // namespace

std::optional<tag_DEVCOLOR> DefaultColour(DWORD device_type, bool is_ntsc) {
  if (!std::has_single_bit(device_type) || device_type > kLastDeviceType) return std::nullopt;
  if (device_type >= kFirstFineType) return is_ntsc ? kFineNtsc : kFinePal;
  return is_ntsc ? kPlainNtsc : kPlainPal;
}

tag_DEVCOLOR LimitedColour(const tag_DEVCOLOR& colour) {
  return {.m_component_0 = std::clamp<LONG>(colour.m_component_0, 0, kMaxBrightness),
          .m_component_1 = std::clamp<LONG>(colour.m_component_1, 0, kMaxOther),
          .m_component_3 = std::clamp<LONG>(colour.m_component_3, 0, kMaxOther),
          .m_component_2 = std::clamp<LONG>(colour.m_component_2, kMinHue, kMaxHue)};
}

PictureColour::PictureColour() {
  Set(kFinePal, kFinePal);
}

void PictureColour::Set(const tag_DEVCOLOR& colour, const tag_DEVCOLOR& neutral) {
  const tag_DEVCOLOR now = LimitedColour(colour);
  const tag_DEVCOLOR plain = LimitedColour(neutral);
  const double contrast = Ratio(now.m_component_1, plain.m_component_1);
  const int brighter = now.m_component_0 - plain.m_component_0;
  for (std::size_t value = 0; value < m_luma.size(); ++value) {
    const double turned = kMiddleGrey + (static_cast<double>(value) - kMiddleGrey) * contrast;
    m_luma[value] = Limited(static_cast<int>(std::lround(turned)) + brighter);
  }
  const double saturation = Ratio(now.m_component_3, plain.m_component_3);
  const double angle = (now.m_component_2 - plain.m_component_2) * std::numbers::pi / (kMaxHue + 1);
  m_own_part = static_cast<int>(std::lround(kUnit * saturation * std::cos(angle)));
  m_other_part = static_cast<int>(std::lround(kUnit * saturation * std::sin(angle)));
  m_keeps_luma = brighter == 0 && now.m_component_1 == plain.m_component_1;
  m_keeps_chroma = m_own_part == kUnit && m_other_part == 0;
}

void PictureColour::Apply(noxcodec::Picture& picture) const {
  if (!m_keeps_luma) {
    const noxcodec::MutablePlaneView luma = picture.Plane(noxcodec::kLuma);
    for (int y = 0; y < luma.height; ++y) {
      BYTE* const row = luma.Row(y);
      std::transform(row, row + luma.width, row, [this](BYTE value) { return m_luma[value]; });
    }
  }
  if (m_keeps_chroma) return;
  const noxcodec::MutablePlaneView blues = picture.Plane(noxcodec::kCb);
  const noxcodec::MutablePlaneView reds = picture.Plane(noxcodec::kCr);
  for (int y = 0; y < blues.height; ++y) {
    BYTE* const cb = blues.Row(y);
    BYTE* const cr = reds.Row(y);
    for (int x = 0; x < blues.width; ++x) {
      const int u = cb[x] - kNoColour;
      const int v = cr[x] - kNoColour;
      const int turned_u = m_own_part * u + m_other_part * v + kUnit / 2;
      const int turned_v = m_own_part * v - m_other_part * u + kUnit / 2;
      cb[x] = Limited(kNoColour + (turned_u >> 8));
      cr[x] = Limited(kNoColour + (turned_v >> 8));
    }
  }
}

}  // namespace zebx::zebdev
