// Feeds one packet to a speech decoder and compares the count it announces with what it writes.
#include <cstdlib>
#include <vector>

#include "platform/noxcodec/noxcodec.h"

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  NxcHandle decoder = nullptr;
  if (nxcCreateAudioDecoder(&decoder, 0) != 0) std::abort();
  DWORD announced = 0, decoded = 0;
  const auto length = static_cast<DWORD>(size);
  if (nxcDecodeAudio(decoder, nullptr, length, nullptr, &announced) == 0) {
    std::vector<std::int16_t> samples(announced + 1U);
    const int result = nxcDecodeAudio(decoder, data, length, samples.data(), &decoded);
    if (result == 0 && decoded != announced) std::abort();
  }
  nxcDestroyHandle(decoder);
  return 0;
}
