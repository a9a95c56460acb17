#include "platform/os/debug_output.h"

#include <memory>
#include <mutex>
#include <utility>

namespace os {
namespace {

struct SinkInForce {
  std::mutex m_mutex;
  std::shared_ptr<const DebugSink> m_sink;  // guarded by m_mutex; null drops every text
};

SinkInForce& InForce() {
  // Never destroyed: a host's threads may end after main has.
  static SinkInForce& in_force = *new SinkInForce;
  return in_force;
}

}  // namespace

void OutputDebugString(const CString& text) {
  std::shared_ptr<const DebugSink> sink;
  {
    const std::lock_guard lock(InForce().m_mutex);
    sink = InForce().m_sink;
  }
  if (sink != nullptr) (*sink)(text);  // outside the lock: a sink may replace itself
}

DebugSink SetDebugSink(DebugSink sink) {
  std::shared_ptr<const DebugSink> exchanged;
  if (sink) exchanged = std::make_shared<const DebugSink>(std::move(sink));
  {
    const std::lock_guard lock(InForce().m_mutex);
    std::swap(InForce().m_sink, exchanged);
  }
  return exchanged != nullptr ? *exchanged : DebugSink();
}

}  // namespace os
