// What passes along the generated street.
#pragma once

#include <vector>

#include "platform/framework/types.h"
#include "platform/zebdev/software/scene_canvas.h"

namespace zebx::zebdev {

// Cars in two lanes and people on two pavements, each at its own speed and coming back for ever.
// Other seeds give other ones. Const operations may run in several threads at once.
class StreetTraffic {
 public:
  explicit StreetTraffic(DWORD seed);

  // Paints who is there in a frame, and the lamp posts between them.
  void Paint(SceneCanvas& canvas, DWORD frame_number) const;
  // The heads of the people there, in scene units, nearest first; some may be outside the picture.
  std::vector<Box> Heads(DWORD frame_number) const;
  // How loud the cars are: 0 to 1 for each of the four.
  double Loudness(DWORD frame_number) const;

  struct Traveller {
    double units_per_frame;  // negative: to the left
    double start;
    double foot;  // where it touches the ground
    double size;  // its length or height
    int red, green, blue;
  };

 private:
  // In the order in which they are painted.
  std::vector<Traveller> m_far_walkers;
  std::vector<Traveller> m_far_cars;
  std::vector<Traveller> m_near_cars;
  std::vector<Traveller> m_near_walkers;
};

}  // namespace zebx::zebdev
