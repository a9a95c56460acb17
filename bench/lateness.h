// How late things came that had a time to come at, and what the process took of the machine for it.
#pragma once

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <vector>

using BenchClock = std::chrono::steady_clock;

inline double MillisecondsBetween(BenchClock::time_point begin, BenchClock::time_point end) {
  return std::chrono::duration<double, std::milli>(end - begin).count();
}

// The value that this share of all does not exceed; 0 of nothing.
inline double Percentile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  const auto last = static_cast<double>(values.size() - 1);
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(share * last);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

// In ms; what came early counts as it is, below 0.
inline void ReportLateness(benchmark::State& state, const std::vector<double>& late_ms) {
  state.counters["late_ms_p50"] = Percentile(late_ms, 0.50);
  state.counters["late_ms_p90"] = Percentile(late_ms, 0.90);
  state.counters["late_ms_p99"] = Percentile(late_ms, 0.99);
  state.counters["late_ms_max"] = Percentile(late_ms, 1);
}

// Seconds of processor time that all threads of the process have had.
inline double ProcessorSeconds() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The same of all processes: what was at work on the machine, this process included.
inline double MachineSeconds() {
  std::ifstream stat("/proc/stat");
  std::string name;
  double user = 0;
  double nice = 0;
  double system = 0;
  stat >> name >> user >> nice >> system;
  return (user + nice + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

// Processor time from its making on. What others took tells how far lateness is the machine's.
class ProcessorUse {
 public:
  void Report(benchmark::State& state, double milliseconds) const {
    const double own = ProcessorSeconds() - m_own_seconds;
    const double others = MachineSeconds() - m_machine_seconds - own;
    state.counters["percent_of_core"] = own / milliseconds * 1e5;
    state.counters["percent_of_others"] = std::max(others, 0.0) / milliseconds * 1e5;
  }

 private:
  double m_own_seconds = ProcessorSeconds();
  double m_machine_seconds = MachineSeconds();
};
