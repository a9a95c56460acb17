// Speech packets: their bytes, how close the samples come back, and bad packets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "tests/platform/noxcodec/picture_measures.h"
#include "tests/support/bytes.h"

using namespace zebx;

namespace {

using Samples = std::vector<std::int16_t>;

// Two tones that wander and swell like a voice, with pauses and a little hiss.
Samples Voice() {
  Samples samples;
  DWORD dice = 1;
  for (double time = 0; time < 1; time += 1.0 / 8000) {
    const double pitch = 900 * time + 50 * std::sin(3 * time);
    const double tones = 5000 * (std::sin(pitch) + std::sin(4 * pitch) / 2);
    const double voice = tones * std::max(0.0, std::sin(7 * time));
    samples.push_back(static_cast<std::int16_t>(voice + Roll(dice, 5)));
  }
  return samples;
}

Samples Decode(std::span<const BYTE> packet) {
  const auto decoder = MakeAudioDecoder();
  const auto length = static_cast<DWORD>(packet.size());
  DWORD count = 0, decoded = 0;
  EXPECT_EQ(nxcDecodeAudio(decoder.get(), nullptr, length, nullptr, &count), 0);
  Samples samples(count);
  EXPECT_EQ(nxcDecodeAudio(decoder.get(), packet.data(), length, samples.data(), &decoded), 0);
  EXPECT_EQ(decoded, count);
  return samples;
}

// The signal to noise ratio in dB of what comes back of the samples in packets of `length`.
double Quality(const Samples& samples, std::size_t length) {
  noxcodec::SpeechEncoder encoder;
  double signal = 0, noise = 1;
  for (std::size_t at = 0; at < samples.size(); at += length) {
    const auto part = std::span(samples).subspan(at, std::min(length, samples.size() - at));
    const Samples decoded = Decode(encoder.Encode(part));
    for (std::size_t i = 0; i < part.size(); ++i) {
      signal += std::pow(part[i], 2);
      noise += std::pow(part[i] - decoded[i], 2);
    }
  }
  return 10 * std::log10(signal / noise);
}

TEST(SpeechCodec, KeepsItsBytesAndSamples) {
  const Samples samples = {0, 40, 300, 900, 1500, 1300, 200, -1100, -1900, -1500, -300, 600};
  noxcodec::SpeechEncoder encoder;
  const auto packet = encoder.Encode(samples);
  EXPECT_EQ(std::string(packet.begin(), packet.end()), Hex("185C8A54B3DDAD31BBA3833877471B518D"));
  EXPECT_EQ(Decode(packet),
            (Samples{-8, 43, 174, 415, 883, 1344, 204, -1146, -1943, -1502, -334, 637}));
}

TEST(SpeechCodec, KeepsSpeechCloseInPacketsOfAnyLength) {
  noxcodec::SpeechEncoder encoder;
  EXPECT_EQ(encoder.Encode(Samples{}).size(), 11U);
  EXPECT_EQ(encoder.Encode(Samples(99)).size(), 11U + 50U) << "an odd count is made even";
  for (const std::size_t length : {160U, 800U, 4000U}) EXPECT_GT(Quality(Voice(), length), 30);
}

TEST(SpeechCodec, BadPacketIsAnErrorThatWritesNothing) {
  const auto decoder = MakeAudioDecoder();
  std::vector<BYTE> packet(31, 0x55);
  Samples pcm(40, 123);
  DWORD samples = 5;
  packet[0] = 89;
  EXPECT_NE(nxcDecodeAudio(decoder.get(), packet.data(), 31, pcm.data(), &samples), 0) << "step";
  packet[0] = 0;
  EXPECT_NE(nxcDecodeAudio(decoder.get(), packet.data(), 10, pcm.data(), &samples), 0) << "short";
  EXPECT_EQ(samples, 5U);
  EXPECT_EQ(pcm, Samples(40, 123));
}

}  // namespace
