// Times the library next to a bare loop of system calls that does the same. Both sides run
// alternately in every iteration; the counter `ratio` compares their medians.
#pragma once

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

// A path of this process's own, below ZEBX_BENCH_DIR or the current directory: the place for
// temporary files may be memory.
inline std::string BenchPath(const std::string& name) {
  const char* directory = std::getenv("ZEBX_BENCH_DIR");
  const std::filesystem::path base =
      directory != nullptr ? std::filesystem::path(directory) : std::filesystem::current_path();
  return (base / ("zebx_bench_" + std::to_string(getpid()) + "_" + name)).string();
}

inline void Require(bool done, const char* what) {
  if (!done) throw std::runtime_error(what);
}

inline double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// `prepare` runs before each side, untimed; the side that goes first alternates.
template <typename Prepare, typename Library, typename Bare>
void Compare(benchmark::State& state, double items, Prepare&& prepare, Library&& library,
             Bare&& bare) {
  std::vector<double> library_seconds;
  std::vector<double> bare_seconds;
  const auto time = [&prepare](auto&& run) {
    prepare();
    const auto begin = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  };
  bool bare_first = false;
  for ([[maybe_unused]] auto _ : state) {
    if (bare_first) bare_seconds.push_back(time(bare));
    library_seconds.push_back(time(library));
    if (!bare_first) bare_seconds.push_back(time(bare));
    bare_first = !bare_first;
    state.SetIterationTime(library_seconds.back());
  }
  state.counters["ns_per_item"] = Median(library_seconds) / items * 1e9;
  state.counters["bare_ns_per_item"] = Median(bare_seconds) / items * 1e9;
  state.counters["ratio"] = Median(library_seconds) / Median(bare_seconds);
}

template <typename Library, typename Bare>
void Compare(benchmark::State& state, double items, Library&& library, Bare&& bare) {
  Compare(
      state, items, [] {}, library, bare);
}
