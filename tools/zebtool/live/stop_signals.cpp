#include "tools/zebtool/live/stop_signals.h"

#include <atomic>
#include <csignal>

namespace zebtool {
namespace {

std::atomic<bool> g_has_come = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // as signal handlers need it

}  // namespace

StopSignals::StopSignals() {
  g_has_come = false;
  const auto note = [](int) { g_has_come = true; };
  m_interrupt = std::signal(SIGINT, note);
  m_terminate = std::signal(SIGTERM, note);
}

StopSignals::~StopSignals() {
  static_cast<void>(std::signal(SIGINT, m_interrupt));
  static_cast<void>(std::signal(SIGTERM, m_terminate));
}

bool StopSignals::HasCome() {
  return g_has_come;
}

}  // namespace zebtool
