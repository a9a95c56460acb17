#include "tools/zebtool/console/stop_signals.h"

#include <atomic>
#include <csignal>

namespace zebtool {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGQUIT, SIGHUP};

std::atomic<bool> g_has_come = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // as signal handlers need it

}  // namespace

StopSignals::StopSignals() {
  g_has_come = false;
  for (std::size_t at = 0; at < kSignals.size(); ++at) {
    m_before.at(at) = std::signal(kSignals.at(at), [](int) { g_has_come = true; });
    // Whoever started this wants it to outlive its terminal.
    if (kSignals.at(at) == SIGHUP && m_before.at(at) == SIG_IGN) {
      static_cast<void>(std::signal(SIGHUP, SIG_IGN));
    }
  }
}

StopSignals::~StopSignals() {
  for (std::size_t at = 0; at < kSignals.size(); ++at) {
    static_cast<void>(std::signal(kSignals.at(at), m_before.at(at)));
  }
}

bool StopSignals::HasCome() {
  return g_has_come;
}

}  // namespace zebtool
