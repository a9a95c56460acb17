#include "platform/zebdev/software/street_scenery.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/zebdev/software/dice.h"
#include "platform/zebdev/software/scene_canvas.h"

namespace zebx::zebdev {
namespace {

using noxcodec::MutablePlaneView;
using noxcodec::Picture;

constexpr DWORD kScenerySeed = 2024;

struct Sky {
  int red, green, blue;  // at its top
  int cloud_red, cloud_green, cloud_blue;
};

constexpr std::array<Sky, 4> kSkies = {{{118, 160, 212, 226, 230, 236},
                                        {158, 166, 176, 214, 217, 222},
                                        {150, 128, 152, 244, 214, 196},
                                        {74, 128, 200, 240, 243, 248}}};

void PaintSky(SceneCanvas& canvas, const Sky& sky) {
  constexpr int kBands = 45;
  constexpr double kBandHeight = 3;
  for (int band = 0; band < kBands; ++band) {
    canvas.FillRectangle({0, band * kBandHeight, SceneCanvas::kWidth, (band + 1) * kBandHeight},
                         Colour::Rgb(sky.red + band * 2, sky.green + band, sky.blue + band / 2));
  }
  const Colour clouds = Colour::Rgb(sky.cloud_red, sky.cloud_green, sky.cloud_blue);
  constexpr std::array<Box, 7> kClouds = {{{30, 18, 92, 30},
                                           {48, 11, 82, 27},
                                           {70, 20, 116, 32},
                                           {206, 30, 262, 41},
                                           {224, 23, 252, 38},
                                           {290, 8, 346, 19},
                                           {305, 4, 330, 16}}};
  for (const Box& cloud : kClouds) canvas.FillEllipse(cloud, clouds);
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

constexpr std::array<House, 5> kHouses = {{{-6, 66, 74, 196, 178, 142, 3, 4},
                                           {66, 128, 92, 172, 104, 84, 2, 3},
                                           {128, 206, 62, 206, 200, 184, 3, 5},
                                           {206, 274, 84, 150, 160, 150, 3, 4},
                                           {274, 360, 98, 200, 156, 110, 2, 4}}};

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

// What differs from street to street.
struct Look {
  Sky sky = kSkies.front();
  std::array<House, kHouses.size()> houses = kHouses;
  std::array<double, 2> trees = {98, 238};
};

Look LookOf(DWORD seed) {
  Look look;
  if (seed == 0) return look;
  Dice dice = Dice::Mixed(seed);
  look.sky = kSkies.at(seed % kSkies.size());
  for (House& house : look.houses) {
    house.eaves += dice.Roll(21) - 10;
    house.red = 130 + dice.Roll(85);
    house.green = house.red - dice.Roll(60);
    house.blue = house.green - dice.Roll(40);
    house.windows += dice.Roll(2);
  }
  for (double& tree : look.trees) tree += dice.Roll(90) - 45;
  return look;
}

}  // namespace

void PaintScenery(Picture& picture, DWORD seed) {
  const Look look = LookOf(seed);
  SceneCanvas canvas(picture);
  Dice dice(kScenerySeed);
  PaintSky(canvas, look.sky);
  for (const House& house : look.houses) PaintHouse(canvas, house, dice);
  PaintGround(canvas);
  PaintTree(canvas, look.trees[0], 194, 86, dice);
  PaintTree(canvas, look.trees[1], 194, 94, dice);
  PaintTexture(picture, dice);
}

}  // namespace zebx::zebdev
