#include "platform/framework/error_report.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

namespace zebx {

namespace {

void PrintToStandardError(const std::exception& error) {
  // In one call, so that lines of several threads stay whole; nobody could be told if it failed.
  static_cast<void>(std::fprintf(stderr, "zebx: %s\n", error.what()));
}

struct SinkInForce {
  std::mutex m_mutex;
  // Guarded by m_mutex. Shared, so that a report takes hold of it without an allocation: what is
  // reported may be that memory ran out.
  std::shared_ptr<const ErrorSink> m_sink = std::make_shared<ErrorSink>(PrintToStandardError);
};

SinkInForce& InForce() {
  // Never destroyed: threads may report after main has ended.
  static SinkInForce& in_force = *new SinkInForce;
  return in_force;
}

}  // namespace

void ReportError(const std::exception& error) {
  std::shared_ptr<const ErrorSink> sink;
  {
    const std::lock_guard lock(InForce().m_mutex);
    sink = InForce().m_sink;
  }
  (*sink)(error);  // outside the lock: a sink may replace itself
}

ErrorSink SetErrorSink(ErrorSink sink) {
  if (!sink) sink = PrintToStandardError;
  std::shared_ptr<const ErrorSink> exchanged = std::make_shared<ErrorSink>(std::move(sink));
  {
    const std::lock_guard lock(InForce().m_mutex);
    std::swap(InForce().m_sink, exchanged);
  }
  return *exchanged;
}

}  // namespace zebx
