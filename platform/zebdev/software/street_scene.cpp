#include "platform/zebdev/software/street_scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "platform/zebdev/software/scene_canvas.h"

namespace zebx::zebdev {
namespace {

using noxcodec::MutablePlaneView;
using noxcodec::Picture;

// Heights of the scene's parts, in scene units.
constexpr double kHouseFoot = 176;
constexpr double kKerb = 202;
constexpr double kRoadEnd = 272;

// The same sequence on every machine.
class Dice {
 public:
  explicit Dice(DWORD seed) : m_state(seed) {}
  // 0 .. sides - 1
  int Roll(int sides) {
    m_state = m_state * 1664525U + 1013904223U;
    return static_cast<int>((m_state >> 8) % static_cast<DWORD>(sides));
  }

 private:
  DWORD m_state;
};

void PaintSky(SceneCanvas& canvas) {
  constexpr int kBands = 45;
  constexpr double kBandHeight = 3;
  for (int band = 0; band < kBands; ++band) {
    canvas.FillRectangle({0, band * kBandHeight, SceneCanvas::kWidth, (band + 1) * kBandHeight},
                         Colour::Rgb(118 + band * 2, 160 + band, 212 + band / 2));
  }
  constexpr std::array<Box, 7> kClouds = {{{30, 18, 92, 30},
                                           {48, 11, 82, 27},
                                           {70, 20, 116, 32},
                                           {206, 30, 262, 41},
                                           {224, 23, 252, 38},
                                           {290, 8, 346, 19},
                                           {305, 4, 330, 16}}};
  for (const Box& cloud : kClouds) canvas.FillEllipse(cloud, Colour::Rgb(226, 230, 236));
}

struct House {
  double left, right, eaves;
  int red, green, blue;
  int floors, windows;
};

void PaintHouse(SceneCanvas& canvas, const House& house, Dice& dice) {
  const Colour wall = Colour::Rgb(house.red, house.green, house.blue);
  canvas.FillTrapezoid({house.left + 14, house.eaves - 22, house.right - 14, house.eaves},
                       house.left - 3, house.right + 3, Colour::Rgb(122, 70, 56));
  canvas.FillRectangle({house.left, house.eaves, house.right, kHouseFoot}, wall);
  canvas.FillRectangle({house.left, kHouseFoot - 7, house.right, kHouseFoot}, wall.Shaded(70));
  const double storey = (kHouseFoot - 7 - house.eaves) / house.floors;
  const double bay = (house.right - house.left) / house.windows;
  const int door = dice.Roll(house.windows);
  for (int floor = 0; floor < house.floors; ++floor) {
    for (int window = 0; window < house.windows; ++window) {
      const double left = house.left + bay * (window + 0.25), right = left + bay * 0.5;
      const double top = house.eaves + storey * (floor + 0.22), bottom = top + storey * 0.55;
      if (floor == house.floors - 1 && window == door) {
        canvas.FillRectangle({left, top, right, kHouseFoot}, Colour::Rgb(88, 54, 34));
        continue;
      }
      canvas.FillRectangle({left - 1.2, top - 1.2, right + 1.2, bottom + 1.2},
                           Colour::Rgb(232, 230, 222));
      const bool lit = dice.Roll(5) == 0;
      canvas.FillRectangle({left, top, right, bottom},
                           lit ? Colour::Rgb(214, 190, 120) : Colour::Rgb(62, 78, 96));
      canvas.FillRectangle({(left + right) / 2 - 0.4, top, (left + right) / 2 + 0.4, bottom},
                           Colour::Rgb(225, 224, 218));
    }
  }
}

void PaintHouses(SceneCanvas& canvas, Dice& dice) {
  constexpr std::array<House, 5> kHouses = {{{-6, 66, 74, 196, 178, 142, 3, 4},
                                             {66, 128, 92, 172, 104, 84, 2, 3},
                                             {128, 206, 62, 206, 200, 184, 3, 5},
                                             {206, 274, 84, 150, 160, 150, 3, 4},
                                             {274, 360, 98, 200, 156, 110, 2, 4}}};
  for (const House& house : kHouses) PaintHouse(canvas, house, dice);
}

void PaintGround(SceneCanvas& canvas) {
  constexpr int kSlabs = 16;
  constexpr int kDashes = 9;
  const double width = SceneCanvas::kWidth;
  canvas.FillRectangle({0, kHouseFoot, width, kKerb}, Colour::Rgb(158, 154, 148));
  for (int number = 0; number < kSlabs; ++number) {
    const double slab = 6 + 22.0 * number;
    canvas.FillTrapezoid({slab, kHouseFoot, slab + 0.6, kKerb}, slab - 3, slab - 2.2,
                         Colour::Rgb(132, 128, 122));
  }
  canvas.FillRectangle({0, kKerb - 3, width, kKerb}, Colour::Rgb(190, 188, 184));
  canvas.FillRectangle({0, kKerb, width, kRoadEnd}, Colour::Rgb(92, 94, 98));
  const double middle = (kKerb + kRoadEnd) / 2;
  for (int number = 0; number < kDashes; ++number) {
    const double dash = -10 + 44.0 * number;
    canvas.FillTrapezoid({dash, middle - 1.2, dash + 22, middle + 1.2}, dash - 1, dash + 22,
                         Colour::Rgb(214, 212, 204));
  }
  canvas.FillRectangle({0, kRoadEnd, width, SceneCanvas::kHeight}, Colour::Rgb(146, 142, 136));
  canvas.FillRectangle({0, kRoadEnd, width, kRoadEnd + 3}, Colour::Rgb(186, 184, 180));
}

void PaintTree(SceneCanvas& canvas, double x, double foot, double size, Dice& dice) {
  canvas.FillTrapezoid({x - 0.05 * size, foot - 0.5 * size, x + 0.05 * size, foot}, x - 0.08 * size,
                       x + 0.08 * size, Colour::Rgb(84, 64, 46));
  constexpr int kLeafClusters = 90;
  for (int cluster = 0; cluster < kLeafClusters; ++cluster) {
    const double angle = dice.Roll(628) / 100.0;
    const double reach = std::sqrt(dice.Roll(100) / 100.0) * 0.34 * size;
    const double radius = (0.05 + dice.Roll(6) / 100.0) * size;
    const double centre = x + reach * std::cos(angle);
    const double middle = foot - 0.78 * size + 1.1 * reach * std::sin(angle);
    const int light = dice.Roll(46) - static_cast<int>(reach * std::sin(angle));
    canvas.FillEllipse({centre - radius, middle - radius, centre + radius, middle + radius},
                       Colour::Rgb(46 + light, 84 + light, 38 + light / 2));
  }
}

// Roughens the luma of all surfaces below the sky.
void PaintTexture(Picture& picture, Dice& dice) {
  constexpr double kSkyEnd = 60;
  const MutablePlaneView luma = picture.Plane(noxcodec::kLuma);
  for (int y = static_cast<int>(luma.height * kSkyEnd / SceneCanvas::kHeight); y < luma.height;
       ++y) {
    int drift = 0;
    for (int x = 0; x < luma.width; ++x) {
      drift = std::clamp(drift + dice.Roll(5) - 2, -5, 5);
      luma.Row(y)[x] = static_cast<BYTE>(std::clamp(luma.Row(y)[x] + drift, 16, 235));
    }
  }
}

void PaintLampPost(SceneCanvas& canvas, double x) {
  const Colour iron = Colour::Rgb(58, 62, 60);
  canvas.FillRectangle({x - 1.3, 84, x + 1.3, kKerb + 1}, iron);
  canvas.FillRectangle({x - 2.6, kKerb - 10, x + 2.6, kKerb + 1}, iron);
  canvas.FillRectangle({x, 84, x + 20, 86}, iron);
  canvas.FillEllipse({x + 13, 84, x + 25, 90}, Colour::Rgb(226, 222, 196));
}

struct Traveller {
  double units_per_frame;  // negative: to the left
  double start;
  double foot;  // where it touches the ground
  double size;  // its length or height
  int red, green, blue;
};

// Where along its way a traveller is: it comes in at one side, leaves at the other and returns
// after a while.
double PlaceOf(const Traveller& traveller, DWORD frame_number) {
  constexpr double kRoundTrip = 560;
  constexpr double kHidden = 100;
  const double way = traveller.start + traveller.units_per_frame * frame_number;
  return way - std::floor(way / kRoundTrip) * kRoundTrip - kHidden;
}

void PaintWheel(SceneCanvas& canvas, double x, double foot, double radius) {
  canvas.FillEllipse({x - radius, foot - 2 * radius, x + radius, foot}, Colour::Rgb(28, 28, 30));
  canvas.FillEllipse({x - radius / 2, foot - 1.5 * radius, x + radius / 2, foot - radius / 2},
                     Colour::Rgb(150, 152, 156));
}

void PaintCar(SceneCanvas& canvas, const Traveller& car, DWORD frame_number) {
  const double length = car.size, foot = car.foot;
  const double left = PlaceOf(car, frame_number), right = left + length;
  const bool to_right = car.units_per_frame > 0;
  const auto along = [&](double part) {
    return to_right ? left + part * length : right - part * length;
  };
  const auto box = [&](double from, double to, double top, double bottom) {
    return Box{std::min(along(from), along(to)), foot - top * length,
               std::max(along(from), along(to)), foot - bottom * length};
  };
  const Colour paint = Colour::Rgb(car.red, car.green, car.blue);
  canvas.FillEllipse({left - 2, foot - 0.05 * length, right + 2, foot + 0.04 * length},
                     Colour::Rgb(58, 59, 62));
  canvas.FillTrapezoid(box(0.24, 0.66, 0.36, 0.21), std::min(along(0.12), along(0.80)),
                       std::max(along(0.12), along(0.80)), paint.Shaded(86));
  canvas.FillTrapezoid(box(0.27, 0.43, 0.34, 0.22), std::min(along(0.19), along(0.44)),
                       std::max(along(0.19), along(0.44)), Colour::Rgb(70, 86, 100));
  canvas.FillTrapezoid(box(0.46, 0.63, 0.34, 0.22), std::min(along(0.46), along(0.74)),
                       std::max(along(0.46), along(0.74)), Colour::Rgb(82, 98, 112));
  canvas.FillRectangle(box(0.0, 1.0, 0.215, 0.07), paint);
  canvas.FillRectangle(box(0.0, 1.0, 0.10, 0.06), paint.Shaded(60));
  canvas.FillRectangle(box(0.96, 1.0, 0.19, 0.14), Colour::Rgb(246, 240, 206));
  canvas.FillRectangle(box(0.0, 0.03, 0.19, 0.14), Colour::Rgb(190, 34, 28));
  PaintWheel(canvas, along(0.20), foot, 0.085 * length);
  PaintWheel(canvas, along(0.79), foot, 0.085 * length);
}

void PaintLimb(SceneCanvas& canvas, double x, double top, double bottom, double swing, double width,
               Colour colour) {
  canvas.FillTrapezoid({x - width / 2, top, x + width / 2, bottom}, x + swing - width / 2,
                       x + swing + width / 2, colour);
}

void PaintWalker(SceneCanvas& canvas, const Traveller& walker, DWORD frame_number) {
  const double height = walker.size, foot = walker.foot, x = PlaceOf(walker, frame_number);
  const double stride = std::sin((x + walker.start) / height * 7.5) * 0.16 * height;
  const Colour coat = Colour::Rgb(walker.red, walker.green, walker.blue);
  const Colour trousers = Colour::Rgb(52, 54, 70);
  const Colour skin = Colour::Rgb(206, 164, 136);
  const double hip = foot - 0.47 * height, shoulder = foot - 0.82 * height;
  canvas.FillEllipse({x - 0.2 * height, foot - 1.5, x + 0.2 * height, foot + 1.5},
                     Colour::Rgb(112, 109, 104));
  PaintLimb(canvas, x, shoulder, hip, -0.7 * stride, 0.09 * height, coat.Shaded(75));
  PaintLimb(canvas, x, hip, foot, stride, 0.12 * height, trousers.Shaded(80));
  PaintLimb(canvas, x, hip, foot, -stride, 0.12 * height, trousers);
  canvas.FillTrapezoid({x - 0.11 * height, shoulder, x + 0.11 * height, hip + 0.04 * height},
                       x - 0.13 * height, x + 0.13 * height, coat);
  PaintLimb(canvas, x, shoulder + 0.02 * height, hip, 0.7 * stride, 0.08 * height, coat.Shaded(88));
  canvas.FillEllipse(
      {x - 0.075 * height, foot - height, x + 0.075 * height, shoulder + 0.01 * height}, skin);
  canvas.FillEllipse(
      {x - 0.08 * height, foot - 1.01 * height, x + 0.08 * height, foot - 0.91 * height},
      Colour::Rgb(58, 44, 34));
}

constexpr std::array<Traveller, 4> kFarWalkers = {{{0.74, 30, 186, 38, 168, 60, 52},
                                                   {-0.62, 300, 190, 40, 60, 92, 140},
                                                   {0.88, 410, 193, 40, 70, 112, 72},
                                                   {-0.80, 120, 196, 42, 198, 186, 150}}};
constexpr std::array<Traveller, 2> kFarCars = {
    {{-2.6, 380, 228, 84, 170, 36, 40}, {-2.6, 90, 228, 90, 206, 208, 212}}};
constexpr std::array<Traveller, 2> kNearCars = {
    {{3.3, 40, 262, 104, 44, 74, 138}, {3.3, 330, 262, 98, 52, 58, 60}}};
constexpr std::array<Traveller, 2> kNearWalkers = {
    {{-1.05, 260, 284, 58, 120, 66, 128}, {0.94, 60, 286, 60, 176, 132, 48}}};
constexpr std::array<double, 3> kLampPosts = {40, 168, 296};

constexpr DWORD kScenerySeed = 2024;
constexpr DWORD kNoiseSeed = 77;
constexpr std::size_t kNoiseBytes = 1 << 16;

}  // namespace

StreetScene::StreetScene(int width, int height) : m_background(width, height) {
  SceneCanvas canvas(m_background);
  Dice dice(kScenerySeed);
  PaintSky(canvas);
  PaintHouses(canvas, dice);
  PaintGround(canvas);
  PaintTree(canvas, 98, 194, 86, dice);
  PaintTree(canvas, 238, 194, 94, dice);
  PaintTexture(m_background, dice);

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
  for (const Traveller& walker : kFarWalkers) PaintWalker(canvas, walker, frame_number);
  for (const double post : kLampPosts) PaintLampPost(canvas, post);
  for (const Traveller& car : kFarCars) PaintCar(canvas, car, frame_number);
  for (const Traveller& car : kNearCars) PaintCar(canvas, car, frame_number);
  for (const Traveller& walker : kNearWalkers) PaintWalker(canvas, walker, frame_number);
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
