// The binary range coder under the video syntax: yes/no decisions of adaptive probability become
// bytes and back. One syntax (macroblock_syntax.h) runs over three coders with the same face:
// RangeEncoder writes, RangeDecoder reads, BitCounter only estimates what writing would cost.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <vector>

#include "platform/framework/types.h"

namespace zebx::noxcodec {

// How likely the next decision is 1, learnt from those before it: the mean of a quick and of a slow
// running average. Both start quicker still, so that a fresh model learns from its first decisions.
class Probability {
 public:
  static constexpr int kBits = 12;

  // Of 1 << kBits; never certain either way.
  DWORD OfOne() const {
    const DWORD mean = (DWORD{m_quick} + m_slow) >> (17 - kBits);
    return std::clamp<DWORD>(mean, kLeast, (1U << kBits) - kLeast);
  }

  void Learn(bool bit) {
    const int warm_up = 1 + std::bit_width(m_count);
    Approach(m_quick, bit, std::min(warm_up, kQuickShift));
    Approach(m_slow, bit, std::min(warm_up, kSlowShift));
    if (warm_up < kSlowShift) ++m_count;
  }

 private:
  static constexpr DWORD kLeast = 16;
  static constexpr int kQuickShift = 4;
  static constexpr int kSlowShift = 7;

  static void Approach(WORD& average, bool bit, int shift) {
    const int target = bit ? 0xFFFF : 0;
    average = static_cast<WORD>(average + ((target - average) >> shift));
  }

  WORD m_quick = 0x8000;
  WORD m_slow = 0x8000;
  BYTE m_count = 0;
};

// Appends to a byte vector, from the constructor to Finish.
class RangeEncoder {
 public:
  explicit RangeEncoder(std::vector<BYTE>& bytes) : m_bytes(bytes) {}

  bool Bit(Probability& probability, bool bit) {
    Split((m_range >> Probability::kBits) * probability.OfOne(), bit);
    probability.Learn(bit);
    return bit;
  }

  // A decision that is as likely 1 as 0.
  bool EvenBit(bool bit) {
    Split(m_range >> 1, bit);
    return bit;
  }

  // Writes the fewest bytes that still single out the decisions, given that the decoder reads
  // zeros beyond the end.
  void Finish() {
    DWORD kept = 0xFF000000;
    while (((m_low + ~kept) & kept) - m_low >= m_range) kept = (kept >> 8) | 0xFF000000;
    Add(((m_low + ~kept) & kept) - m_low);
    for (; kept != 0; kept <<= 8) ShiftOut();
  }

 private:
  void Split(DWORD bound, bool bit) {
    if (bit) {
      m_range = bound;
    } else {
      Add(bound);
      m_range -= bound;
    }
    while (m_range < kLeastRange) {
      m_range <<= 8;
      ShiftOut();
    }
  }

  void Add(DWORD amount) {
    m_low += amount;
    if (m_low >= amount) return;
    for (auto byte = m_bytes.rbegin(); ++*byte == 0; ++byte) {
    }
  }

  void ShiftOut() {
    m_bytes.push_back(static_cast<BYTE>(m_low >> 24));
    m_low <<= 8;
  }

  static constexpr DWORD kLeastRange = 1U << 24;

  std::vector<BYTE>& m_bytes;
  DWORD m_low = 0;
  DWORD m_range = 0xFFFFFFFF;
};

// Reads what RangeEncoder wrote. Any bytes decode to some decisions; beyond the end it reads zeros
// and, once more of them than a whole stream needs were read, Overrun() is true.
class RangeDecoder {
 public:
  explicit RangeDecoder(std::span<const BYTE> bytes) : m_bytes(bytes) {
    for (int i = 0; i < 4; ++i) ShiftIn();
  }

  // The second argument of the encoder's Bit is ignored here.
  bool Bit(Probability& probability, bool = false) {
    const bool bit = Split((m_range >> Probability::kBits) * probability.OfOne());
    probability.Learn(bit);
    return bit;
  }

  bool EvenBit(bool = false) { return Split(m_range >> 1); }

  bool Overrun() const { return m_position > m_bytes.size() + 4; }

 private:
  bool Split(DWORD bound) {
    const bool bit = m_code < bound;
    if (bit) {
      m_range = bound;
    } else {
      m_code -= bound;
      m_range -= bound;
    }
    while (m_range < kLeastRange) {
      m_range <<= 8;
      ShiftIn();
    }
    return bit;
  }

  void ShiftIn() {
    m_code = (m_code << 8) | (m_position < m_bytes.size() ? m_bytes[m_position] : 0U);
    ++m_position;
  }

  static constexpr DWORD kLeastRange = 1U << 24;

  std::span<const BYTE> m_bytes;
  std::size_t m_position = 0;
  DWORD m_range = 0xFFFFFFFF;
  DWORD m_code = 0;
};

// Costs are counted in 1/256 bits.
inline constexpr int kCostOfOneBit = 256;

// The cost of a decision of probability (index + 1/2) / 256: -log2, worked out by squaring.
inline constexpr std::array<WORD, 256> kCostTable = [] {
  std::array<WORD, 256> table{};
  for (unsigned index = 0; index < table.size(); ++index) {
    unsigned mantissa = (2 * index + 1) << 7;  // 16 bits stand for 1
    unsigned cost = 0;
    while (mantissa < 0x8000) {
      mantissa <<= 1;
      cost += kCostOfOneBit;
    }
    for (unsigned bit = kCostOfOneBit / 2; bit > 0; bit >>= 1) {
      mantissa = (mantissa * mantissa) >> 15;
      if (mantissa < 0x10000) {
        cost += bit;
      } else {
        mantissa >>= 1;
      }
    }
    table[index] = static_cast<WORD>(cost);
  }
  return table;
}();

inline int CostOf(const Probability& probability, bool bit) {
  const DWORD of_one = probability.OfOne() >> (Probability::kBits - 8);
  return kCostTable[bit ? of_one : 255 - of_one];
}

// Adds up costs and changes no probability.
class BitCounter {
 public:
  bool Bit(const Probability& probability, bool bit) {
    m_cost += CostOf(probability, bit);
    return bit;
  }
  bool EvenBit(bool bit) {
    m_cost += kCostOfOneBit;
    return bit;
  }
  int Cost() const { return m_cost; }

 private:
  int m_cost = 0;
};

}  // namespace zebx::noxcodec
