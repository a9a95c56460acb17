// Ending on Ctrl-C as after the last second: orderly.
#pragma once

#include <array>

namespace zebtool {

// While it lives, SIGINT, SIGTERM, SIGQUIT and SIGHUP are noted instead of ending the process; a
// SIGHUP that is ignored stays so. One at a time.
class StopSignals {
 public:
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // True once one has come.
  static bool HasCome();

 private:
  using Handler = void (*)(int);
  std::array<Handler, 4> m_before;  // what was in force
};

}  // namespace zebtool
