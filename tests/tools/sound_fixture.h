// Sound files as tests make and read them, and tones to put in.
#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

// `samples` are interleaved when there are several channels.
inline void WriteSound(const std::string& path, const std::vector<std::int16_t>& samples,
                       int rate = 8000, int channels = 1,
                       int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16) {
  SF_INFO info{};
  info.samplerate = rate;
  info.channels = channels;
  info.format = format;
  SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
  sf_command(file, SFC_SET_SCALE_INT_FLOAT_WRITE, nullptr, SF_TRUE);
  const auto count = static_cast<sf_count_t>(samples.size());
  EXPECT_EQ(sf_write_short(file, samples.data(), count), count);
  sf_close(file);
}

// The samples of what the tool writes: 16-bit mono WAV.
inline std::vector<std::int16_t> ReadSound(const std::string& path) {
  SF_INFO info{};
  SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) return {};
  EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
  EXPECT_EQ(info.samplerate * info.channels, 8000);
  std::vector<std::int16_t> samples(static_cast<std::size_t>(info.frames));
  EXPECT_EQ(sf_read_short(file, samples.data(), info.frames), info.frames);
  sf_close(file);
  return samples;
}

inline std::vector<std::int16_t> MakeTone(std::size_t samples, double hertz, double rate = 8000) {
  std::vector<std::int16_t> tone(samples);
  for (std::size_t i = 0; i < samples; ++i) {
    tone[i] = static_cast<std::int16_t>(
        std::lround(8000 * std::sin(static_cast<double>(i) * hertz * 6.283185307 / rate)));
  }
  return tone;
}

// How far apart they are on the average of the samples from `begin` to `end`.
inline double NoiseOf(const std::vector<std::int16_t>& wanted, const std::vector<std::int16_t>& got,
                      std::size_t begin, std::size_t end) {
  double error = 0;
  for (std::size_t i = begin; i < end; ++i) error += std::pow(got.at(i) - wanted.at(i), 2);
  return std::sqrt(error / static_cast<double>(end - begin));
}
