// Arithmetic on pixels in 16 bits, where a vector holds twice as many numbers as in 32.
#pragma once

#include <cstdint>

namespace zebx::noxcodec {

// `value` is one that 16 bits hold.
constexpr std::int16_t Narrowed(int value) {
  return static_cast<std::int16_t>(value);
}

}  // namespace zebx::noxcodec
