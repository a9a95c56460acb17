// Ending on Ctrl-C as after the last second: orderly.
#pragma once

namespace zebtool {

// While it lives, SIGINT and SIGTERM are noted instead of ending the process. One at a time.
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
  Handler m_interrupt;  // what was in force before
  Handler m_terminate;
};

}  // namespace zebtool
