// The progress line on the error stream.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/zebtool/console/console.h"

namespace zebtool {

// Shows "label 123 frames" while it lives, redrawn a few times a second and wiped at the end; shows
// nothing when the error stream is no terminal.
class Progress {
 public:
  Progress(Console& console, std::string label);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Show(std::uint64_t count, std::string_view noun = "frames");
  // "label 12 %"
  void ShowPart(std::uint64_t done, std::uint64_t total);
  // "label text"
  void ShowText(const std::string& text);

 private:
  using SteadyClock = std::chrono::steady_clock;

  Console& m_console;
  std::string m_label;
  SteadyClock::time_point m_next = SteadyClock::now();
  bool m_shown = false;
};

}  // namespace zebtool
