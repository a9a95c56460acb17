// How many pictures and samples one core encodes and decodes in a second, and what a picture in
// 32 bits costs next to a memcpy of as many bytes.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "bench/compare.h"
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

std::vector<noxcodec::Picture> StreetPictures(int width, int height, DWORD count) {
  const zebdev::StreetScene scene(width, height);
  std::vector<noxcodec::Picture> pictures(count);
  for (DWORD i = 0; i < count; ++i) scene.Render(i, pictures[i]);
  return pictures;
}

std::vector<Packet> StreetPackets(int width, int height, DWORD count) {
  noxcodec::VideoEncoder encoder({.width = width, .height = height});
  std::vector<Packet> packets;
  for (const auto& picture : StreetPictures(width, height, count)) {
    const auto packet = encoder.Encode(picture.View());
    packets.push_back({packet.frame_type, {packet.data.begin(), packet.data.end()}});
  }
  return packets;
}

// A decoder of pictures of one size, and room for one in 32 bits.
class Decoder {
 public:
  Decoder(int width, int height)
      : m_pitch(4 * width),
        m_pixels(static_cast<std::size_t>(m_pitch) * static_cast<std::size_t>(height)) {
    Require(nxcCreateVideoDecoder(&m_handle, 1, static_cast<DWORD>(width),
                                  static_cast<DWORD>(height), 0) == 0,
            "no decoder");
  }
  ~Decoder() { nxcDestroyHandle(m_handle); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  void Decode(const Packet& packet) {
    Require(nxcDecodeVideo(m_handle, packet.frame_type, packet.data.data(),
                           static_cast<DWORD>(packet.data.size())) == 0,
            "decoding failed");
  }
  void Show(DWORD post_processing) {
    nxcGetVideo(m_handle, m_pixels.data(), kNxcFormatBgrx, m_pitch, post_processing);
  }
  std::size_t ShownBytes() const { return m_pixels.size(); }

 private:
  NxcHandle m_handle = nullptr;
  int m_pitch;
  std::vector<BYTE> m_pixels;
};

void RenderStreet(benchmark::State& state) {
  const zebdev::StreetScene scene(kWidth, kHeight);
  noxcodec::Picture picture;
  DWORD frame_number = 0;
  for (auto _ : state) scene.Render(frame_number++, picture);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(RenderStreet);

void EncodeVideo(benchmark::State& state) {
  const auto pictures = StreetPictures(kWidth, kHeight, kPictures);
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
  const auto packets = StreetPackets(kWidth, kHeight, kPictures);
  const bool shown = state.range(0) != 0;
  Decoder decoder(kWidth, kHeight);
  std::size_t index = 0;
  for (auto _ : state) {
    decoder.Decode(packets[index]);
    if (shown) decoder.Show(kNxcPostPlayback);
    index = (index + 1) % packets.size();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(DecodeVideo)->ArgName("shown")->Arg(0)->Arg(1);

// A picture of a stream of one size in another or the same; each iteration shows it once more.
void ShowVideo(benchmark::State& state) {
  const auto side = [&state](std::size_t argument) {
    return static_cast<int>(state.range(argument));
  };
  Decoder decoder(side(2), side(3));
  decoder.Decode(StreetPackets(side(0), side(1), 1).front());
  const std::vector<BYTE> source(decoder.ShownBytes(), 1);
  std::vector<BYTE> copy(source.size());
  Compare(
      state, 1, [&] { decoder.Show(static_cast<DWORD>(state.range(4))); },
      [&] {
        std::memcpy(copy.data(), source.data(), source.size());
        benchmark::ClobberMemory();
      });
}
BENCHMARK(ShowVideo)
    ->ArgNames({"w", "h", "shown_w", "shown_h", "post"})
    ->Args({352, 288, 352, 288, 0})
    ->Args({352, 288, 352, 288, kNxcPostPlayback})
    ->Args({704, 576, 704, 576, 0})
    ->Args({704, 576, 704, 576, kNxcPostPlayback})
    ->Args({704, 576, 352, 288, 0})
    ->Args({352, 288, 704, 576, 0})
    ->UseManualTime()
    ->Iterations(400)
    ->Unit(benchmark::kMicrosecond);

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
