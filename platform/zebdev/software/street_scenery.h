// What stands along the generated street.
#pragma once

#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"

namespace zebx::zebdev {

// Heights of the scene's parts, in scene units.
inline constexpr double kHouseFoot = 176;
inline constexpr double kKerb = 202;
inline constexpr double kRoadEnd = 272;

// Paints sky, houses, trees and road over the whole picture. Other seeds give another sky and other
// houses.
void PaintScenery(noxcodec::Picture& picture, DWORD seed);

}  // namespace zebx::zebdev
