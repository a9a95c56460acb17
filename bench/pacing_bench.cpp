// How late the timers and the wave-out device are that players go by.
#include <array>
#include <cmath>

#include "bench/compare.h"
#include "bench/lateness.h"
#include "platform/os/sound/wave_out.h"
#include "platform/os/windows/windows.h"

namespace {

// A window of the bench's thread whose procedure keeps when a message came.
class Listener {
 public:
  explicit Listener(UINT message)
      : m_window(os::CreateWindow(nullptr, "listener", {},
                                  [this, message](HWND, UINT came, WPARAM, LPARAM) -> LRESULT {
                                    if (came == message) m_times.push_back(BenchClock::now());
                                    return 0;
                                  })) {}
  ~Listener() { os::DestroyWindow(m_window); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  HWND Window() const { return m_window; }
  // Takes messages until so many have come.
  const std::vector<BenchClock::time_point>& Await(std::size_t count) {
    os::Message message;
    while (m_times.size() < count && os::GetMessage(&message) != 0) os::DispatchMessage(message);
    return m_times;
  }

 private:
  std::vector<BenchClock::time_point> m_times;
  HWND m_window;
};

void Timer(benchmark::State& state) {
  constexpr UINT kIntervalMs = 5;
  constexpr std::size_t kTicks = 400;
  for ([[maybe_unused]] auto _ : state) {
    Listener listener(os::kWmTimer);
    const auto begin = BenchClock::now();
    Require(os::SetTimer(listener.Window(), 1, kIntervalMs) == 1, "no timer");
    const auto& times = listener.Await(kTicks);
    // On a grid that starts with the timer, whose clock is up to 1 ms behind; what comes a whole
    // interval late is merged.
    std::vector<double> late_ms;
    late_ms.reserve(times.size());
    for (const auto& time : times) {
      late_ms.push_back(std::fmod(MillisecondsBetween(begin, time) + 1, kIntervalMs) - 1);
    }
    ReportLateness(state, late_ms);
    state.counters["ms_a_tick"] = MillisecondsBetween(begin, times.back()) / kTicks;
  }
}
BENCHMARK(Timer)->Iterations(1)->Unit(benchmark::kMillisecond);

// Ten buffers of 1,024 samples, all queued at once, so that each report has its time.
void WaveOut(benchmark::State& state) {
  constexpr std::size_t kBuffers = 10;
  constexpr std::size_t kBufferBytes = 2048;
  constexpr double kBufferMs = 128;
  const os::WaveFormat format;
  for ([[maybe_unused]] auto _ : state) {
    Listener listener(os::kMmWomDone);
    HWAVEOUT device = nullptr;
    Require(
        os::waveOutOpen(&device, 0, &format, reinterpret_cast<std::uintptr_t>(listener.Window()), 0,
                        os::kCallbackWindow) == os::kWaveNoError,
        "no device");
    std::vector<BYTE> silence(kBufferBytes);
    std::array<os::WaveHeader, kBuffers> headers;
    const auto begin = BenchClock::now();
    for (os::WaveHeader& header : headers) {
      header.m_data = silence.data();
      header.m_length = kBufferBytes;
      Require(os::waveOutPrepareHeader(device, &header, sizeof header) == os::kWaveNoError &&
                  os::waveOutWrite(device, &header, sizeof header) == os::kWaveNoError,
              "not queued");
    }
    const auto& times = listener.Await(kBuffers);
    std::vector<double> late_ms;
    for (std::size_t i = 0; i < kBuffers; ++i) {
      const double due_ms = kBufferMs * static_cast<double>(i + 1);
      late_ms.push_back(MillisecondsBetween(begin, times[i]) - due_ms);
    }
    ReportLateness(state, late_ms);
    state.counters["ms_a_buffer"] = MillisecondsBetween(begin, times.back()) / kBuffers;
    os::waveOutReset(device);
    os::waveOutClose(device);
  }
}
BENCHMARK(WaveOut)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
