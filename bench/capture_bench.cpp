// What a live frame costs in the library, from the channel's call to the host's callback, next to
// one copy of its packet; and what sixteen cameras cost together.
#include <benchmark/benchmark.h>

#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "bench/compare.h"
#include "capture/capture_app.h"
#include "capture/capture_camera.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/show_param.h"
#include "capture/zebx.h"
#include "platform/zebdev/software/virtual_channels.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "tests/support/counted_memory.h"

using namespace zebx;

namespace {

constexpr DWORD kFrameSize = 135;  // coded as 352 x 288
constexpr DWORD kFramesPerSecond = 25;
constexpr DWORD kFramesPerGroup = 25;
constexpr WORD kBoards = 4;
constexpr WORD kCamerasPerBoard = 4;

DWORD Listen(DWORD, std::uintptr_t, std::uintptr_t, std::uintptr_t frame) {
  benchmark::DoNotOptimize(frame);
  return 0;
}

// A packet of so many bytes, whose head moves on from frame to frame.
class Packet {
 public:
  explicit Packet(DWORD bytes) : m_bytes(bytes, 0x5A) {
    m_head.m_video_bytes = bytes - DWORD{sizeof m_head};
  }

  void* Next() {
    m_head.m_flags = m_number % kFramesPerGroup == 0 ? 0 : 1;
    m_head.m_time_stamp += 1000 / kFramesPerSecond;
    ++m_number;
    std::memcpy(m_bytes.data(), &m_head, sizeof m_head);
    return m_bytes.data();
  }
  const std::vector<BYTE>& Bytes() const { return m_bytes; }

 private:
  std::vector<BYTE> m_bytes;
  tag_DEVFRAME m_head = {};
  DWORD m_number = 0;
};

// Sixteen open cameras with captions and masks. Their channels bring nothing by themselves.
class Cameras {
 public:
  Cameras() {
    zebdev::SetDevicePlan(
        {zebdev::MakeVirtualDevice(0x040, 8), zebdev::MakeVirtualDevice(0x040, 8)});

    zebdev::SetDrive(zebdev::Drive::kStepped);
    Require(zebxInitZebx(0, Listen, 0, nullptr, "d:\\dev") == 1, "cannot initialise");
    CMaskList masks;
    for (LONG left = 0; left < 5; ++left) {
      auto mask = std::make_unique<CMaskInfo>();
      const CRect blocks{left, 1, left + 3, 4};
      mask->SetMBRect(&blocks, tag_FRAMESIZE{kFrameSize});
      masks.AddMaskInfo(mask.release());
    }
    m_show.SetCameraName("Camera");
    m_show.SetBoardName("Board");
    m_show.ShowCaption(1);
    for (WORD board = 0; board < kBoards; ++board) {
      Require(zebxOpenBoard(board, kFrameSize, kFramesPerSecond) == 1, "cannot open a board");
      for (WORD camera = 0; camera < kCamerasPerBoard; ++camera) {
        const tag_ZEBCAMERAID id = {board, camera};
        Require(zebxOpenCamera(&id, 0, nullptr, &masks, nullptr, &m_show) == 1,
                "cannot open a camera");
        m_cameras.push_back(GetCaptureApp().FindCamera(&id).get());
      }
    }
  }
  ~Cameras() {
    for (CCaptureCamera* camera : m_cameras) camera->Close();
    zebxCloseZebx();
    zebdev::SetDevicePlan({});
  }

  void BringFrame(std::size_t camera, void* packet) const {
    CCaptureCamera& called = *m_cameras[camera];
    CCaptureCamera::ChannelCallback(&called, kNoxdevLiveFrame, Handle(called),
                                    called.GetDeviceChannel(), packet);
  }
  void AskForCaption(std::size_t camera, tag_CAPTIONINFO& caption) const {
    CCaptureCamera& called = *m_cameras[camera];
    CCaptureCamera::ChannelCallback(&called, kNoxdevCaptionRequest, Handle(called), 1, &caption);
  }
  std::size_t Count() const { return m_cameras.size(); }

 private:
  static std::uintptr_t Handle(const CCaptureCamera& camera) {
    return reinterpret_cast<std::uintptr_t>(camera.GetDeviceHandle());
  }

  CShowParam m_show;
  std::vector<CCaptureCamera*> m_cameras;
};

// How often memory was asked for while something ran.
template <typename Run>
int Allocations(Run&& run) {
  constexpr int kMany = std::numeric_limits<int>::max();
  counted_memory::calls_left = kMany;
  run();
  return kMany - counted_memory::calls_left.exchange(-1);
}

void LiveFrame(benchmark::State& state) {
  constexpr int kFrames = 1000;  // short, so that little else of the machine comes between
  const Cameras cameras;
  Packet packet(static_cast<DWORD>(state.range(0)));
  std::vector<BYTE> copy(packet.Bytes().size());
  const auto bring = [&] {
    for (int i = 0; i < kFrames; ++i) cameras.BringFrame(0, packet.Next());
  };
  Compare(state, kFrames, bring, [&] {
    for (int i = 0; i < kFrames; ++i) {
      packet.Next();
      std::memcpy(copy.data(), packet.Bytes().data(), copy.size());
      benchmark::ClobberMemory();
    }
  });
  state.counters["allocations"] = Allocations(bring);
}
BENCHMARK(LiveFrame)->Arg(20 * 1024)->UseManualTime()->Iterations(400)->Unit(
    benchmark::kMillisecond);

// A second of sixteen cameras: every frame brought, and every live picture with its caption.
void SixteenCameras(benchmark::State& state) {
  constexpr DWORD kPacketBytes = 8 * 1024;
  const Cameras cameras;
  std::vector<Packet> packets(cameras.Count(), Packet(kPacketBytes));
  tag_CAPTIONINFO caption = {};
  const auto second = [&] {
    for (DWORD frame = 0; frame < kFramesPerSecond; ++frame) {
      for (std::size_t camera = 0; camera < cameras.Count(); ++camera) {
        cameras.BringFrame(camera, packets[camera].Next());
        cameras.AskForCaption(camera, caption);
      }
    }
  };
  second();
  std::vector<double> seconds;
  seconds.reserve(static_cast<std::size_t>(state.max_iterations));
  const std::size_t before_bytes = counted_memory::live_bytes;
  for ([[maybe_unused]] auto _ : state) {
    const auto begin = std::chrono::steady_clock::now();
    second();
    seconds.push_back(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    state.SetIterationTime(seconds.back());
  }
  state.counters["percent_of_core"] = Median(seconds) * 100;
  state.counters["frames"] = static_cast<double>(static_cast<std::size_t>(state.iterations()) *
                                                 kFramesPerSecond * cameras.Count());
  state.counters["grown_bytes"] =
      static_cast<double>(counted_memory::live_bytes) - static_cast<double>(before_bytes);
  state.counters["allocations"] = Allocations(second);
}
BENCHMARK(SixteenCameras)->UseManualTime()->Iterations(300)->Unit(benchmark::kMillisecond);

}  // namespace
