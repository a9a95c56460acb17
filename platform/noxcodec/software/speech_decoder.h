// The software speech decoder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/framework/types.h"

namespace zebx::noxcodec {

// The samples in a packet of `packet_bytes`; nothing when no packet is that short.
std::optional<std::size_t> SpeechSampleCount(std::size_t packet_bytes);

// Decodes one packet to `samples`, which has room for SpeechSampleCount of them. Fails for a packet
// that is too short or whose header is out of range; nothing is written then.
bool DecodeSpeech(std::span<const BYTE> packet, std::span<std::int16_t> samples);

}  // namespace zebx::noxcodec
