// Arbitrary bytes as a WAV file that a channel plays: opened, and played beyond its end.
#include <array>
#include <cstdlib>

#include "fuzz/sparse_disk.h"
#include "platform/zebdev/software/wav_loop.h"

using namespace zebx;

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  SparseDisk disk;
  disk.PutSparse("in", SparseBytes::Of({data, size}));
  zebdev::WavLoop sound;
  const bool is_open = sound.Open("in").empty();
  std::array<std::int16_t, 640> samples;
  if (sound.Read(samples) && !is_open) std::abort();
  for (int period = 0; period < 10; ++period) sound.Read(samples);
  return 0;
}
