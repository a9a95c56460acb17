// Throws of dice for generated scenes.
#pragma once

#include "platform/framework/types.h"

namespace zebx::zebdev {

// The same sequence on every machine.
class Dice {
 public:
  explicit Dice(DWORD seed) : m_state(seed) {}
  // For seeds that are small numbers: their neighbours have nothing in common.
  static Dice Mixed(DWORD seed) {
    seed *= 2654435761U;
    seed = (seed ^ seed >> 15) * 2246822519U;
    return Dice(seed ^ seed >> 13);
  }
  // 0 .. sides - 1
  int Roll(int sides) {
    m_state = m_state * 1664525U + 1013904223U;
    return static_cast<int>((m_state >> 8) % static_cast<DWORD>(sides));
  }

 private:
  DWORD m_state;
};

}  // namespace zebx::zebdev
