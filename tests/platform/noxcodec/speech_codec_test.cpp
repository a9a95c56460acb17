// Speech packets: their bytes, how close the samples come back, and bad packets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "tests/platform/noxcodec/picture_measures.h"
#include "tests/support/bytes.h"
#include "tests/support/temp_dir.h"

using namespace zebx;

namespace {

using Samples = std::vector<std::int16_t>;

// Three tones that wander and swell like a voice, with pauses and a little hiss.
Samples Voice(std::size_t count) {
  Samples samples(count);
  DWORD hiss = 1;
  for (std::size_t i = 0; i < count; ++i) {
    const double time = static_cast<double>(i) / 8000;
    const double pitch = 900 * time + 50 * std::sin(3 * time);
    const double tones = std::sin(pitch) + std::sin(4 * pitch) / 2 + std::sin(7 * pitch) / 3;
    hiss = hiss * 1664525 + 1013904223;
    samples[i] = static_cast<std::int16_t>(5000 * tones * std::max(0.0, std::sin(7 * time)) +
                                           static_cast<double>(hiss >> 24) / 8);
  }
  return samples;
}

class SpeechCodec : public testing::Test {
 protected:
  SpeechCodec() { EXPECT_EQ(nxcCreateAudioDecoder(&m_decoder, 0), 0); }
  ~SpeechCodec() override { nxcDestroyHandle(m_decoder); }

  Samples Decode(std::span<const BYTE> packet) {
    DWORD count = 0;
    const auto length = static_cast<DWORD>(packet.size());
    EXPECT_EQ(nxcDecodeAudio(m_decoder, nullptr, length, nullptr, &count), 0);
    Samples samples(count);
    DWORD decoded = 0;
    EXPECT_EQ(nxcDecodeAudio(m_decoder, packet.data(), length, samples.data(), &decoded), 0);
    EXPECT_EQ(decoded, count);
    return samples;
  }

  // What comes back of the samples in packets of `length`.
  Samples RoundTrip(const Samples& samples, std::size_t length) {
    Samples decoded;
    for (std::size_t at = 0; at < samples.size(); at += length) {
      const std::size_t count = std::min(length, samples.size() - at);
      const Samples part = Decode(m_encoder.Encode(std::span(samples).subspan(at, count)));
      decoded.insert(decoded.end(), part.begin(), part.end());
    }
    return decoded;
  }

  NxcHandle m_decoder = nullptr;
  noxcodec::SpeechEncoder m_encoder;
};

double SignalToNoise(const Samples& wanted, const Samples& got) {
  double signal = 0, noise = 1;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    signal += double{1} * wanted[i] * wanted[i];
    noise += std::pow(wanted[i] - got[i], 2);
  }
  return 10 * std::log10(signal / noise);
}

TEST_F(SpeechCodec, KeepsItsBytesAndSamples) {
  const Samples samples = {0, 40, 300, 900, 1500, 1300, 200, -1100, -1900, -1500, -300, 600};
  const auto packet = m_encoder.Encode(samples);
  EXPECT_EQ(std::string(packet.begin(), packet.end()), Hex("185C8A54B3DDAD31BBA3833877471B518D"));
  EXPECT_EQ(Decode(packet),
            (Samples{-8, 43, 174, 415, 883, 1344, 204, -1146, -1943, -1502, -334, 637}));
}

TEST_F(SpeechCodec, KeepsAVoiceCloseInPacketsOfAnyLength) {
  EXPECT_EQ(m_encoder.Encode(Samples{}).size(), 11U);
  EXPECT_EQ(m_encoder.Encode(Samples(99)).size(), 11U + 50U) << "an odd count is made even";
  const Samples voice = Voice(8000);
  for (const std::size_t length : {160U, 320U, 800U, 4000U}) {
    EXPECT_GT(SignalToNoise(voice, RoundTrip(voice, length)), 30) << length;
  }
}

TEST_F(SpeechCodec, KeepsItsSignalToNoiseRatioOnRealSpeech) {
  const std::string path = MediaFile("speech_8khz_mono.wav");
  if (path.empty()) GTEST_SKIP() << "no speech in ZEBX_MEDIA_DIR";
  const std::string wave = ReadWholeFile(path);
  Samples speech;
  for (std::size_t at = 44; at + 4 <= wave.size(); at += 2) {
    speech.push_back(static_cast<std::int16_t>(DwordAt(wave, at)));
  }
  EXPECT_GE(SignalToNoise(speech, RoundTrip(speech, 320)), 26);
}

TEST_F(SpeechCodec, BadPacketIsAnErrorThatWritesNothing) {
  std::vector<BYTE> packet(31, 0x55);
  Samples pcm(40, 123);
  DWORD samples = 5;
  packet[0] = 89;
  EXPECT_NE(nxcDecodeAudio(m_decoder, packet.data(), 31, pcm.data(), &samples), 0) << "step";
  packet[0] = 0;
  EXPECT_NE(nxcDecodeAudio(m_decoder, packet.data(), 10, pcm.data(), &samples), 0) << "short";
  EXPECT_EQ(samples, 5U);
  EXPECT_EQ(pcm, Samples(40, 123));
}

// Predictors at the edge of stability and codes that only grow must stay within bounds.
TEST_F(SpeechCodec, DecodesAnyCodesAndPredictors) {
  for (int reflection = 0; reflection < 256; ++reflection) {
    for (const BYTE codes : {BYTE{0x77}, BYTE{0xF7}, BYTE{0x00}}) {
      std::vector<BYTE> packet(600, codes);
      packet[0] = 88;
      std::fill_n(packet.begin() + 1, 10, static_cast<BYTE>(reflection));
      EXPECT_EQ(Decode(packet).size(), 1178U);
    }
  }
}

}  // namespace
