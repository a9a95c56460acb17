#include "platform/noxcodec/software/speech_decoder.h"

#include "platform/framework/byte_order.h"
#include "platform/noxcodec/software/speech_format.h"

namespace zebx::noxcodec {

std::optional<std::size_t> SpeechSampleCount(std::size_t packet_bytes) {
  if (packet_bytes < kSpeechHeaderBytes) return std::nullopt;
  return 2 * (packet_bytes - kSpeechHeaderBytes);
}

bool DecodeSpeech(std::span<const BYTE> packet, std::span<std::int16_t> samples) {
  const auto count = SpeechSampleCount(packet.size());
  if (!count || samples.size() < *count) return false;
  ByteReader reader(packet);
  const int step_index = reader.Get<BYTE>();
  if (step_index >= kSpeechSteps) return false;
  SpeechReflections reflections;
  for (std::int8_t& reflection : reflections) reflection = reader.Get<std::int8_t>();

  const SpeechPredictor predictor(reflections);
  SpeechState state(step_index);
  const auto codes = packet.subspan(kSpeechHeaderBytes);
  for (std::size_t i = 0; i < *count; ++i) {
    state.Advance(state.Predict(predictor), (codes[i / 2] >> (i % 2 * 4)) & 0x0F);
    samples[i] = state.LastSample();
  }
  return true;
}

}  // namespace zebx::noxcodec
