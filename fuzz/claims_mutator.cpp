// How inputs are changed from run to run: as libFuzzer does it, and by claims of lengths as damaged
// and hostile files make them. Part of every target.
#include <algorithm>
#include <array>
#include <random>

#include "fuzz/sparse_disk.h"
#include "platform/framework/byte_order.h"

extern "C" std::size_t LLVMFuzzerMutate(BYTE* data, std::size_t size, std::size_t max_size);

extern "C" std::size_t LLVMFuzzerCustomMutator(BYTE* data, std::size_t size, std::size_t max_size,
                                               unsigned seed) {
  std::mt19937 random(seed);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  // A power of two, half the time, or a neighbour of one.
  const auto claim = [&](std::size_t bits) {
    constexpr std::array<ULONGLONG, 4> kDistances = {0, 0, 1, ~0ULL};
    return (1ULL << below(bits)) + kDistances.at(below(kDistances.size()));
  };
  switch (below(8)) {
    case 0:
    case 1: {
      if (size < sizeof(DWORD)) return size;
      // Most numbers that matter stand at even offsets near the beginning.
      constexpr std::size_t kHeaderBytes = 64;
      std::size_t at = below(size - sizeof(DWORD) + 1);
      if (below(2) == 0) at = at % kHeaderBytes & ~1ULL;
      zebx::ByteWriter({data + at, sizeof(DWORD)}).Put(static_cast<DWORD>(claim(32)));
      return size;
    }
    case 2: {
      const std::size_t bytes = SparseBytes::Of({data, size}).m_bytes.size();
      if (bytes + kGapInstructionBytes > max_size) return size;
      const std::size_t gap_at = below(2) == 0 ? bytes : below(bytes + 1);
      std::ranges::copy(GapInstruction(gap_at, claim(kMaxGapBits)), data + bytes);
      return bytes + kGapInstructionBytes;
    }
    default:
      return LLVMFuzzerMutate(data, size, max_size);
  }
}
