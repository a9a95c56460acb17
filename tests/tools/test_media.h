// Small videos and sounds for the tests of zebtool.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

// A picture of a moving gradient, planes of 4:2:0 back to back.
inline std::string MakePicture(int width, int height, int number) {
  std::string planes;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double wave = std::sin((x + 3 * number) * 0.05) * std::cos(y * 0.04);
      planes += static_cast<char>(static_cast<unsigned char>(std::lround(128 + 80 * wave)));
    }
  }
  const std::size_t chroma =
      static_cast<std::size_t>((width + 1) / 2) * static_cast<std::size_t>((height + 1) / 2);
  planes.append(chroma, static_cast<char>(110 + number % 20));
  planes.append(chroma, '\x8C');
  return planes;
}

inline std::string MakeY4m(int width, int height, int frames, const std::string& rate = "25:1",
                           const std::string& fields = " Ip A1:1 C420jpeg") {
  std::string video = "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F" +
                      rate + fields + "\n";
  for (int number = 0; number < frames; ++number) {
    video += "FRAME\n" + MakePicture(width, height, number);
  }
  return video;
}

inline void PutLittleEndian(std::string& bytes, unsigned long value, int count) {
  for (int i = 0; i < count; ++i, value >>= 8) bytes += static_cast<char>(value & 0xFF);
}

// 16-bit PCM around the samples, which are interleaved when there are two channels.
inline std::string MakeWav(const std::vector<std::int16_t>& samples, unsigned long rate = 8000,
                           unsigned long channels = 1) {
  std::string wav = "RIFF";
  PutLittleEndian(wav, 36 + samples.size() * 2, 4);
  wav += "WAVEfmt ";
  PutLittleEndian(wav, 16, 4);
  PutLittleEndian(wav, 1, 2);
  PutLittleEndian(wav, channels, 2);
  PutLittleEndian(wav, rate, 4);
  PutLittleEndian(wav, rate * channels * 2, 4);
  PutLittleEndian(wav, channels * 2, 2);
  PutLittleEndian(wav, 16, 2);
  wav += "data";
  PutLittleEndian(wav, samples.size() * 2, 4);
  for (const std::int16_t sample : samples) {
    PutLittleEndian(wav, static_cast<std::uint16_t>(sample), 2);
  }
  return wav;
}

inline std::vector<std::int16_t> MakeTone(std::size_t samples, double hertz, double rate = 8000) {
  std::vector<std::int16_t> tone(samples);
  for (std::size_t i = 0; i < samples; ++i) {
    tone[i] = static_cast<std::int16_t>(
        std::lround(8000 * std::sin(static_cast<double>(i) * hertz * 6.283185307 / rate)));
  }
  return tone;
}

// The samples of a WAV file that WavWriter made.
inline std::vector<std::int16_t> SamplesOf(const std::string& wav) {
  std::vector<std::int16_t> samples;
  for (std::size_t at = 44; at + 1 < wav.size(); at += 2) {
    const auto low = static_cast<unsigned char>(wav[at]);
    const auto high = static_cast<unsigned char>(wav[at + 1]);
    samples.push_back(static_cast<std::int16_t>(low | high << 8));
  }
  return samples;
}
