// Running command lines of zebtool, and what to feed them: recordings of invented frames, small
// enough to try damage at every byte, and small videos and sounds.
#pragma once

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "platform/os/clock.h"
#include "tests/support/made_recording.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/temp_dir.h"
#include "tools/zebtool/subcommands.h"

struct ToolRun {
  int status;
  std::string out;
  std::string err;
};

inline ToolRun RunTool(const std::vector<std::string>& arguments, const std::string& input = {}) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  zebtool::Console console{in, out, err};
  const int status = zebtool::RunZebtool(arguments, console);
  return {status, out.str(), err.str()};
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// The number behind "key": in JSON output; -1 without one.
inline std::int64_t JsonNumber(const std::string& json, const std::string& key) {
  const std::size_t at = json.find('"' + key + "\": ");
  return at == std::string::npos ? -1 : std::stoll(json.substr(at + key.size() + 4));
}

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

// 16-bit PCM around the samples, which are interleaved when there are two channels.
inline std::string MakeWav(const std::vector<std::int16_t>& samples, unsigned rate = 8000,
                           unsigned channels = 1) {
  std::string wav = "RIFF" + Little(36 + samples.size() * 2) + "WAVEfmt " + Little(16) +
                    Little(1, 2) + Little(channels, 2) + Little(rate) +
                    Little(rate * channels * 2) + Little(channels * 2, 2) + Little(16, 2) + "data" +
                    Little(samples.size() * 2);
  for (const std::int16_t sample : samples) wav += Little(static_cast<std::uint16_t>(sample), 2);
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
    samples.push_back(static_cast<std::int16_t>(DwordAt(wav, at)));
  }
  return samples;
}

// How far apart they are on the average of the samples from `begin` to `end`.
inline double NoiseOf(const std::vector<std::int16_t>& wanted, const std::vector<std::int16_t>& got,
                      std::size_t begin, std::size_t end) {
  double error = 0;
  for (std::size_t i = begin; i < end; ++i) error += std::pow(got.at(i) - wanted.at(i), 2);
  return std::sqrt(error / static_cast<double>(end - begin));
}
