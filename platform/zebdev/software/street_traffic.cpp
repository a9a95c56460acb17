#include "platform/zebdev/software/street_traffic.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include "platform/zebdev/software/dice.h"
#include "platform/zebdev/software/street_scenery.h"

namespace zebx::zebdev {
namespace {

using Traveller = StreetTraffic::Traveller;

constexpr double kRoundTrip = 560;

// Where along its way a traveller is: it comes in at one side, leaves at the other and returns
// after a while.
double PlaceOf(const Traveller& traveller, DWORD frame_number) {
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
void PaintLampPost(SceneCanvas& canvas, double x) {
  const Colour iron = Colour::Rgb(58, 62, 60);
  canvas.FillRectangle({x - 1.3, 84, x + 1.3, kKerb + 1}, iron);
  canvas.FillRectangle({x - 2.6, kKerb - 10, x + 2.6, kKerb + 1}, iron);
  canvas.FillRectangle({x, 84, x + 20, 86}, iron);
  canvas.FillEllipse({x + 13, 84, x + 25, 90}, Colour::Rgb(226, 222, 196));
}

constexpr std::array<double, 3> kLampPosts = {40, 168, 296};

// The same number of them at other places, speeds and in other colours. Those of one lane keep
// their distance, so they share a speed.
std::vector<Traveller> Reshuffle(std::span<const Traveller> travellers, bool is_lane, Dice& dice) {
  std::vector<Traveller> shuffled(travellers.begin(), travellers.end());
  const double shift = dice.Roll(static_cast<int>(kRoundTrip));
  double pace = 0;
  for (Traveller& traveller : shuffled) {
    constexpr int kSlowest = 75;  // percent
    if (!is_lane || pace == 0) pace = (kSlowest + dice.Roll(60)) / 100.0;
    traveller.start += shift + dice.Roll(is_lane ? 40 : 200);
    traveller.units_per_frame *= pace;
    if (!is_lane && dice.Roll(2) == 0) traveller.units_per_frame = -traveller.units_per_frame;
    traveller.red = 50 + dice.Roll(140);
    traveller.green = std::max(40, traveller.red + dice.Roll(90) - 60);
    traveller.blue = std::max(40, traveller.green + dice.Roll(90) - 40);
  }
  return shuffled;
}

Box HeadOf(const Traveller& walker, DWORD frame_number) {
  const double height = walker.size, x = PlaceOf(walker, frame_number);
  return {x - 0.13 * height, walker.foot - 1.05 * height, x + 0.13 * height,
          walker.foot - 0.77 * height};
}

}  // namespace

StreetTraffic::StreetTraffic(DWORD seed) {
  if (seed == 0) {
    m_far_walkers.assign(kFarWalkers.begin(), kFarWalkers.end());
    m_far_cars.assign(kFarCars.begin(), kFarCars.end());
    m_near_cars.assign(kNearCars.begin(), kNearCars.end());
    m_near_walkers.assign(kNearWalkers.begin(), kNearWalkers.end());
    return;
  }
  Dice dice = Dice::Mixed(seed);
  m_far_walkers = Reshuffle(kFarWalkers, false, dice);
  m_far_cars = Reshuffle(kFarCars, true, dice);
  m_near_cars = Reshuffle(kNearCars, true, dice);
  m_near_walkers = Reshuffle(kNearWalkers, false, dice);
}

void StreetTraffic::Paint(SceneCanvas& canvas, DWORD frame_number) const {
  for (const Traveller& walker : m_far_walkers) PaintWalker(canvas, walker, frame_number);
  for (const double post : kLampPosts) PaintLampPost(canvas, post);
  for (const Traveller& car : m_far_cars) PaintCar(canvas, car, frame_number);
  for (const Traveller& car : m_near_cars) PaintCar(canvas, car, frame_number);
  for (const Traveller& walker : m_near_walkers) PaintWalker(canvas, walker, frame_number);
}

std::vector<Box> StreetTraffic::Heads(DWORD frame_number) const {
  std::vector<Box> heads;
  for (const Traveller& walker : m_near_walkers) heads.push_back(HeadOf(walker, frame_number));
  for (const Traveller& walker : m_far_walkers) heads.push_back(HeadOf(walker, frame_number));
  return heads;
}

double StreetTraffic::Loudness(DWORD frame_number) const {
  constexpr double kReach = 70;  // scene units in which a car's sound halves
  double loudness = 0;
  for (const auto* lane : {&m_far_cars, &m_near_cars}) {
    for (const Traveller& car : *lane) {
      const double away = PlaceOf(car, frame_number) + (car.size - SceneCanvas::kWidth) / 2;
      loudness += 1 / (1 + away * away / (kReach * kReach));
    }
  }
  return loudness;
}

}  // namespace zebx::zebdev
