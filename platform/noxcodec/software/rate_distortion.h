// The encoder's exchange rate between bits and faults of the picture.
#pragma once

#include <cstdint>

#include "platform/noxcodec/software/range_coder.h"

namespace zebx::noxcodec {

// Weighs squared errors against costs, both in units of 1/256. A step of the quantiser in size
// moves the exchange rate with its square.
class RateDistortion {
 public:
  explicit RateDistortion(int quantiser)
      : m_squared_error_per_bit(kSquaredErrorPerBit * quantiser * quantiser),
        m_difference_per_bit(kDifferencePerBit * quantiser) {}

  // `cost` as BitCounter counts it.
  std::int64_t OfCost(int cost) const { return (m_squared_error_per_bit * cost) >> 8; }
  std::int64_t Of(std::int64_t squared_error, int cost) const {
    return squared_error * kCostOfOneBit + OfCost(cost);
  }
  // For the motion search, whose measure is the sum of absolute differences.
  std::int64_t OfDifference(int difference, int cost) const {
    return std::int64_t{difference} * kCostOfOneBit + ((m_difference_per_bit * cost) >> 8);
  }

 private:
  static constexpr std::int64_t kSquaredErrorPerBit = 180;
  static constexpr std::int64_t kDifferencePerBit = 215;

  std::int64_t m_squared_error_per_bit;
  std::int64_t m_difference_per_bit;
};

}  // namespace zebx::noxcodec
