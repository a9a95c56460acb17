// What playing takes, in real time: how late frames come, what the players themselves cost next to
// decoding and drawing, what a seek reads, what a player holds, and when its first picture is
// there.
#include <fstream>
#include <memory>

#include "bench/played_street.h"
#include "platform/noxdisplay/display_record.h"
#include "playback/display_info.h"
#include "playback/played_stream.h"
#include "tests/support/counted_memory.h"
#include "tests/support/faulty_file_system.h"

using namespace zebx;

namespace {

constexpr double kTickMs = 5;
constexpr std::size_t kPlayers = 16;

template <typename Player>
std::vector<std::unique_ptr<Screen<Player>>> OpenScreens(const Host& host, std::size_t count,
                                                         const std::string& path,
                                                         bool is_drawn = true) {
  std::vector<std::unique_ptr<Screen<Player>>> screens;
  for (std::size_t i = 0; i < count; ++i) {
    auto& screen = screens.emplace_back(std::make_unique<Screen<Player>>(host.Main(), is_drawn));
    screen->Open(path, static_cast<int>(i));
  }
  return screens;
}

// Reports lateness and pace: the share of the frames that should have been shown.
template <typename Screens>
std::size_t ReportPace(benchmark::State& state, const Screens& screens, double milliseconds) {
  constexpr double kSlackMs = 10;
  std::vector<double> late_ms;
  std::size_t shown = 0;
  for (const auto& screen : screens) {
    const auto late = screen->LateMs();
    late_ms.insert(late_ms.end(), late.begin(), late.end());
    shown += screen->m_shown.size();
  }
  ReportLateness(state, late_ms);
  const auto in_time = std::ranges::count_if(late_ms, [](double late) { return late <= kSlackMs; });
  state.counters["percent_within_10_ms"] =
      100 * static_cast<double>(in_time) /
      static_cast<double>(std::max<std::size_t>(late_ms.size(), 1));
  const double due = milliseconds / kFrameMs * static_cast<double>(screens.size());
  state.counters["percent_of_pace"] = 100 * static_cast<double>(shown) / due;
  return shown;
}

// Decoding and presenting without a player.
class BarePane {
 public:
  explicit BarePane(HWND main)
      : m_windows(main), m_stream(CreatePlayedStream({kWidth, kHeight}, nullptr)) {
    nxcCreateVideoDecoder(&m_decoder, kEncoder, kWidth, kHeight, kNxcPostPlayback);
    m_record.m_flags =
        noxdisplay::kShowCameraName | noxdisplay::kShowClock | noxdisplay::kShowSmooth;
    SetText(m_record.m_camera_name, "Street");
    SetText(m_record.m_clock, "12:34:56");
  }
  ~BarePane() {
    nxcDestroyHandle(m_decoder);
    noxshowDestroyStream(m_stream);
  }
  BarePane(const BarePane&) = delete;
  BarePane& operator=(const BarePane&) = delete;

  void Show(const Packet& packet) {
    nxcDecodeVideo(m_decoder, packet.m_type, packet.m_bytes.data(),
                   static_cast<DWORD>(packet.m_bytes.size()));
    PutPicture(m_decoder, m_stream, RowOrder::kTopDown, kNxcPostPlayback);
    noxshowDisplay(m_stream, m_windows.m_screen, &m_record);
  }

 private:
  FileScreen m_windows;
  NxcHandle m_decoder = nullptr;
  NoxshowStream m_stream = nullptr;
  tag_DISPLAYINFO m_record = {};
};

// Processor seconds for decoding and presenting alone, of so many frames on as many streams.
double BareSeconds(const Host& host, std::size_t streams, std::size_t frames) {
  std::vector<std::unique_ptr<BarePane>> panes;
  for (std::size_t i = 0; i < streams; ++i) {
    panes.push_back(std::make_unique<BarePane>(host.Main()));
  }
  const double before = ProcessorSeconds();
  for (std::size_t i = 0; i < frames; ++i) {
    panes[i % streams]->Show(Street()[i / streams % kGroup]);
  }
  return ProcessorSeconds() - before;
}

void PlayFile(benchmark::State& state) {
  const auto players = static_cast<std::size_t>(state.range(0));
  constexpr double kMs = 8000;
  const Host host;
  const Recording recording("play", 400);
  for ([[maybe_unused]] auto _ : state) {
    const auto screens = OpenScreens<CDecodeWnd>(host, players, recording.Path());
    const ProcessorUse use;
    Host::RunFor(kMs);
    use.Report(state, kMs);
    const std::size_t shown = ReportPace(state, screens, kMs);
    state.counters["bare_percent_of_core"] = BareSeconds(host, players, shown) / kMs * 1e5;
  }
}
BENCHMARK(PlayFile)->ArgName("players")->Arg(1)->Arg(kPlayers)->Iterations(1)->Unit(
    benchmark::kMillisecond);

// Sixteen players of frames whose video is lost, into no window: nothing is decoded or drawn, and
// what is left is their own.
void PlayersOwnWork(benchmark::State& state) {
  constexpr double kMs = 5000;
  const Host host;
  const Recording recording("own", 400, [](CZebFile&, CZebFrameData& frame) {
    frame.SetFlag(static_cast<WORD>(frame.GetFlag() | kFrameVideoLost));
  });
  for ([[maybe_unused]] auto _ : state) {
    const auto screens = OpenScreens<CDecodeWnd>(host, kPlayers, recording.Path(), false);
    const ProcessorUse use;
    Host::RunFor(kMs);
    use.Report(state, kMs);
    ReportPace(state, screens, kMs);
  }
}
BENCHMARK(PlayersOwnWork)->Iterations(1)->Unit(benchmark::kMillisecond);

// Four panes, of which the followers are told the time of the first: how much each frame loses
// because the last tick is set to the moment it went on at.
void PlayPanes(benchmark::State& state) {
  constexpr double kMs = 6000;
  const Host host;
  const Recording recording("panes", 400);
  for ([[maybe_unused]] auto _ : state) {
    const auto screens = OpenScreens<CMultiDecodeWnd>(host, 4, recording.Path());
    screens[0]->m_on_frame = [&](const Shown& shown) {
      for (std::size_t i = 1; i < screens.size(); ++i) {
        screens[i]->m_player.SetPlayTime(shown.m_position.m_time);
      }
    };
    const ProcessorUse use;
    Host::RunFor(kMs);
    use.Report(state, kMs);
    ReportPace(state, screens, kMs);
    const auto& master = screens[0]->m_shown;
    Require(master.size() > 1, "nothing was shown");
    const double played_ms = MillisecondsBetween(master.front().m_when, master.back().m_when);
    state.counters["lost_ms_a_frame"] =
        played_ms / static_cast<double>(master.size() - 1) - kFrameMs;
    std::size_t last = 0;
    for (const auto& screen : screens) last = std::max(last, screen->m_shown.size());
    state.counters["frames_of_first"] = static_cast<double>(master.size());
    state.counters["frames_of_fastest"] = static_cast<double>(last);
  }
}
BENCHMARK(PlayPanes)->Iterations(1)->Unit(benchmark::kMillisecond);

// Bytes that the process has read from files.
double BytesRead() {
  std::ifstream io("/proc/self/io");
  std::string name;
  double bytes = 0;
  io >> name >> bytes;
  return bytes;
}

// Seeks by time all over 1 GB, of whose blocks only their headers and the one that is sought have
// bytes on the disk. Frames are read twice, to be counted and to be decoded.
void SeekByTime(benchmark::State& state) {
  constexpr ULONGLONG kFileBytes = 1ULL << 30;
  constexpr int kSoughtBlock = 600;
  constexpr std::size_t kSmallestFrame = 1000;
  const Host host;
  ULONGLONG second_bytes = 0;
  for (const Packet& packet : Street()) second_bytes += packet.m_bytes.size();
  Require(second_bytes != 0, "no packets");
  const auto frames = static_cast<int>(kFileBytes / second_bytes) * kGroup;
  std::unique_ptr<FaultyFileSystem> holes = std::make_unique<FaultyFileSystem>();
  const Recording recording("seek", frames, [&](CZebFile& file, CZebFrameData&) {
    // The first and the last frame of a block are written with its neighbours' headers.
    const int block = file.GetTotalBlock() - 1;
    const bool is_whole = block == 0 || (block >= kSoughtBlock - 1 && block <= kSoughtBlock + 1);
    holes->SkipWritesFrom(is_whole ? kFileBytes : kSmallestFrame);
  });
  holes.reset();
  const auto screens = OpenScreens<CDecodeWnd>(host, 1, recording.Path());
  FileScreen& screen = *screens[0];
  Host::RunUntil([&] { return !screen.m_shown.empty(); });
  screen.m_player.Pause();
  CZebFile& file = *screen.m_player.GetZebFile();
  CZebFileInfo info;
  Require(info.Create(recording.Path()) == 1, "no header");
  const DWORD block_stamp = file.GetBlockTimeStamp(kSoughtBlock);
  const DWORD block_ms = file.GetBlockTimeStamp(kSoughtBlock + 1) - block_stamp;
  const CTime time = file.GetTime(block_stamp + block_ms - 500);
  double read_bytes = 0;
  double seek_ms = 0;
  for ([[maybe_unused]] auto _ : state) {
    Host::RunFor(2 * kFrameMs);
    const std::size_t shown = screen.m_shown.size();
    const double before = BytesRead();
    const auto begin = BenchClock::now();
    Require(screen.m_player.PlayFrom(time) == 1, "not found");
    Host::RunUntil([&] { return screen.m_shown.size() > shown; });
    screen.m_player.Pause();
    seek_ms = MillisecondsBetween(begin, screen.m_shown[shown].m_when);
    read_bytes = BytesRead() - before;
    Require(screen.m_shown[shown].m_position.m_block == kSoughtBlock, "another block");
    state.SetIterationTime(seek_ms / 1e3);
  }
  const double block_bytes = static_cast<double>(second_bytes) * block_ms / 1000;
  state.counters["blocks"] = file.GetTotalBlock();
  state.counters["block_bytes"] = block_bytes;
  state.counters["read_bytes"] = read_bytes;
  state.counters["ratio"] = read_bytes / block_bytes;
}
BENCHMARK(SeekByTime)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

// From OpenVideo to the first picture, in ticks of 5 ms beside the decoding of one I-frame.
void FirstPicture(benchmark::State& state) {
  const Host host;
  const Recording recording("first", 50);
  const double decoding_ms = BareSeconds(host, 1, 1) * 1e3;
  std::vector<double> ticks;
  FileScreen screen(host.Main());
  for ([[maybe_unused]] auto _ : state) {
    screen.m_shown.clear();
    const auto begin = BenchClock::now();
    screen.Open(recording.Path());
    Host::RunUntil([&] { return !screen.m_shown.empty(); });
    const double elapsed_ms = MillisecondsBetween(begin, screen.m_shown.front().m_when);
    ticks.push_back((elapsed_ms - decoding_ms) / kTickMs);
    state.SetIterationTime(elapsed_ms / 1e3);
    screen.m_player.CloseVideo(0);
  }
  state.counters["ticks_p50"] = Percentile(ticks, 0.5);
  state.counters["ticks_max"] = Percentile(ticks, 1);
}
BENCHMARK(FirstPicture)->Iterations(50)->UseManualTime()->Unit(benchmark::kMillisecond);

// Heap bytes of a player that has shown pictures, with its windows, next to those of a decoder and
// a stream that have: the rest is the player's, its frame buffers for the most part.
void MemoryOfPlayer(benchmark::State& state) {
  const Host host;
  const Recording recording("memory", 250);
  const auto grown = [before = counted_memory::live_bytes.load()] {
    return static_cast<double>(counted_memory::live_bytes - before);
  };
  for ([[maybe_unused]] auto _ : state) {
    {
      BarePane pane(host.Main());
      for (const Packet& packet : Street()) pane.Show(packet);
      state.counters["bare_bytes"] = grown();
    }
    FileScreen screen(host.Main());
    screen.Open(recording.Path());
    Host::RunUntil([&] { return screen.m_shown.size() >= kGroup; });
    screen.m_player.Pause();
    state.counters["bytes"] = grown();
    state.counters["own_bytes"] = state.counters["bytes"] - state.counters["bare_bytes"];
    state.counters["frame_buffers"] = kWidth * kHeight * 2 + 65536;
  }
}
BENCHMARK(MemoryOfPlayer)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
