// Rate and quality on real material: a street clip and a speech recording in the directory that the
// environment variable ZEBX_MEDIA_DIR names. Skipped without them.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/noxcodec/software/speech_decoder.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/noxcodec/software/video_decoder.h"
#include "tests/platform/noxcodec/picture_measures.h"
#include "tests/support/bytes.h"
#include "tests/support/temp_dir.h"

namespace noxcodec {
namespace {

// The path of a media file, empty when there is none.
std::string MediaFile(const std::string& name) {
  const char* const directory = std::getenv("ZEBX_MEDIA_DIR");
  const std::string path = std::string(directory == nullptr ? "" : directory) + "/" + name;
  return directory != nullptr && std::filesystem::exists(path) ? path : "";
}

struct ClosePipe {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

std::vector<Picture> ReadStreetClip(const std::string& path) {
  const std::string command = "xz -dc '" + path + "'";
  const std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
  std::array<char, 256> line;
  std::vector<Picture> pictures;
  if (pipe == nullptr || std::fgets(line.data(), line.size(), pipe.get()) == nullptr) return {};
  while (std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
    Picture picture(352, 288);
    for (int plane = 0; plane < kPlaneCount; ++plane) {
      const auto view = picture.Plane(plane);
      const auto bytes = static_cast<std::size_t>(view.width * view.height);
      if (std::fread(view.pixels, 1, bytes, pipe.get()) != bytes) return {};
    }
    pictures.push_back(std::move(picture));
  }
  return pictures;
}

TEST(MediaQuality, StreetClipKeepsItsRateAndQuality) {
  const std::string path = MediaFile("street_352x288.y4m.xz");
  if (path.empty()) GTEST_SKIP() << "no street clip in ZEBX_MEDIA_DIR";
  const auto pictures = ReadStreetClip(path);
  ASSERT_EQ(pictures.size(), 100U);

  const auto packets = EncodeAll({.width = 352, .height = 288}, pictures);
  VideoDecoder decoder;
  std::size_t bytes = 0;
  double psnr = 0;
  for (std::size_t i = 0; i < packets.size(); ++i) {
    ASSERT_TRUE(
        decoder.Decode(packets[i], i % 25 == 0 ? FrameKind::kIntra : FrameKind::kPredicted));
    bytes += packets[i].size();
    psnr += LumaPsnr(decoder.LastPicture(), pictures[i].View());
  }
  EXPECT_LE(bytes / packets.size(), 1500U);
  EXPECT_GE(psnr / static_cast<double>(packets.size()), 36.0);
}

TEST(MediaQuality, SpeechKeepsItsSignalToNoiseRatio) {
  const std::string path = MediaFile("speech_8khz_mono.wav");
  if (path.empty()) GTEST_SKIP() << "no speech in ZEBX_MEDIA_DIR";
  const std::string wave = ReadWholeFile(path);
  SpeechEncoder encoder;
  double signal = 0, noise = 0;
  std::array<std::int16_t, 320> samples, decoded;
  for (std::size_t at = 44; at + sizeof samples <= wave.size(); at += sizeof samples) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<std::int16_t>(DwordAt(wave, at + 2 * i));
    }
    ASSERT_TRUE(DecodeSpeech(encoder.Encode(samples), decoded));
    for (std::size_t i = 0; i < samples.size(); ++i) {
      signal += std::pow(samples[i], 2);
      noise += std::pow(samples[i] - decoded[i], 2);
    }
  }
  EXPECT_GE(10 * std::log10(signal / noise), 26);
}

}  // namespace
}  // namespace noxcodec
