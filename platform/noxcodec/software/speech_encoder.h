// The software speech encoder: samples in, the packets that nxcDecodeAudio takes out.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx::noxcodec {

// Encodes 8 kHz mono speech, one self-contained packet at a time: a packet carries the state that
// its decoder starts from, so players may begin with any of them. One thread at a time.
class ZEBX_API SpeechEncoder {
 public:
  // Encodes `samples` (any number) as one packet: 11 bytes and then a byte for two samples. An
  // odd count is made even by repeating the last sample. Borrowed; valid until the next Encode.
  std::span<const BYTE> Encode(std::span<const std::int16_t> samples);

 private:
  std::vector<BYTE> m_packet;
};

}  // namespace zebx::noxcodec
