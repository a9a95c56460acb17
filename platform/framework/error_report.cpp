#include "platform/framework/error_report.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace {

void PrintToStandardError(const std::exception& error) {
  std::fprintf(stderr, "zebx: %s\n", error.what());
}

struct SinkInForce {
  std::mutex m_mutex;
  ErrorSink m_sink = PrintToStandardError;  // guarded by m_mutex
};

SinkInForce& InForce() {
  static SinkInForce in_force;
  return in_force;
}

}  // namespace

void ReportError(const std::exception& error) {
  ErrorSink sink;
  {
    const std::lock_guard lock(InForce().m_mutex);
    sink = InForce().m_sink;
  }
  sink(error);  // outside the lock: a sink may replace itself
}

ErrorSink SetErrorSink(ErrorSink sink) {
  if (!sink) sink = PrintToStandardError;
  const std::lock_guard lock(InForce().m_mutex);
  return std::exchange(InForce().m_sink, std::move(sink));
}
