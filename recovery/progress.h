// How long work on a recording tells how far it is, and is told to stop.
#pragma once

#include <functional>
#include <utility>

#include "platform/framework/types.h"

namespace zebx {

// Is called on the caller's own thread, with no lock held, about every kProgressStepBytes of the
// file and once at its end. False cancels the work.
using ProgressCallback = std::function<bool(ULONGLONG done_bytes, ULONGLONG total_bytes)>;

inline constexpr ULONGLONG kProgressStepBytes = ULONGLONG{1} << 20;

// Calls a callback, which may be empty, in steps.
class ProgressMeter {
 public:
  explicit ProgressMeter(ProgressCallback callback) : m_callback(std::move(callback)) {}

  // False once the callback has cancelled.
  bool Pass(ULONGLONG done_bytes, ULONGLONG total_bytes) {
    if (m_cancelled || !m_callback) return !m_cancelled;
    if (done_bytes < m_next_call && done_bytes < total_bytes) return true;
    m_next_call = done_bytes + kProgressStepBytes;
    m_cancelled = !m_callback(done_bytes, total_bytes);
    return !m_cancelled;
  }
  bool IsCancelled() const { return m_cancelled; }

 private:
  ProgressCallback m_callback;
  ULONGLONG m_next_call = 0;
  bool m_cancelled = false;
};

}  // namespace zebx
