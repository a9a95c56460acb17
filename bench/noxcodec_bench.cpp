// How many pictures, and seconds of speech, one core encodes and decodes in a second.
#include <benchmark/benchmark.h>

#include <cmath>
#include <stdexcept>
#include <vector>

#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "platform/zebdev/software/street_scene.h"

using namespace zebx;

namespace {

constexpr int kWidth = 352;
constexpr int kHeight = 288;
constexpr int kPictures = 50;

struct Packet {
  WORD frame_type;
  std::vector<BYTE> data;
};

std::vector<noxcodec::Picture> StreetPictures() {
  const zebdev::StreetScene scene(kWidth, kHeight);
  std::vector<noxcodec::Picture> pictures(kPictures);
  for (DWORD i = 0; i < pictures.size(); ++i) scene.Render(i, pictures[i]);
  return pictures;
}

std::vector<Packet> StreetPackets() {
  noxcodec::VideoEncoder encoder({.width = kWidth, .height = kHeight});
  std::vector<Packet> packets;
  for (const auto& picture : StreetPictures()) {
    const auto packet = encoder.Encode(picture.View());
    packets.push_back({packet.frame_type, {packet.data.begin(), packet.data.end()}});
  }
  return packets;
}

void Require(bool good, const char* what) {
  if (!good) throw std::runtime_error(what);
}

void RenderStreet(benchmark::State& state) {
  const zebdev::StreetScene scene(kWidth, kHeight);
  noxcodec::Picture picture;
  DWORD frame_number = 0;
  for (auto _ : state) scene.Render(frame_number++, picture);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(RenderStreet);

void EncodeVideo(benchmark::State& state) {
  const auto pictures = StreetPictures();
  noxcodec::VideoEncoder encoder({.width = kWidth, .height = kHeight});
  std::size_t bytes = 0, index = 0;
  for (auto _ : state) {
    bytes += encoder.Encode(pictures[index].View()).data.size();
    index = (index + 1) % pictures.size();
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["bytes_per_picture"] =
      static_cast<double>(bytes) / static_cast<double>(state.iterations());
}
BENCHMARK(EncodeVideo);

// With the argument, pictures are also converted as players do.
void DecodeVideo(benchmark::State& state) {
  const auto packets = StreetPackets();
  const bool shown = state.range(0) != 0;
  NxcHandle decoder = nullptr;
  Require(nxcCreateVideoDecoder(&decoder, 1, kWidth, kHeight, 0) == 0, "no decoder");
  std::vector<BYTE> pixels(kWidth * kHeight * 4);
  std::size_t index = 0;
  for (auto _ : state) {
    const Packet& packet = packets[index];
    Require(nxcDecodeVideo(decoder, packet.frame_type, packet.data.data(),
                           static_cast<DWORD>(packet.data.size())) == 0,
            "decoding failed");
    if (shown) {
      nxcGetVideo(decoder, pixels.data(), kNxcFormatBgrx, kWidth * 4, kNxcPostPlayback);
    }
    index = (index + 1) % packets.size();
  }
  state.SetItemsProcessed(state.iterations());
  nxcDestroyHandle(decoder);
}
BENCHMARK(DecodeVideo)->ArgName("shown")->Arg(0)->Arg(1);

void EncodeSpeech(benchmark::State& state) {
  std::vector<std::int16_t> samples(800);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<std::int16_t>(6000 * std::sin(0.1 * static_cast<double>(i)));
  }
  noxcodec::SpeechEncoder encoder;
  for (auto _ : state) benchmark::DoNotOptimize(encoder.Encode(samples).data());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(samples.size()));
}
BENCHMARK(EncodeSpeech);

}  // namespace
