// What the host's C functions go through when they may run out of memory.
#pragma once

#include <exception>

#include "platform/framework/error_report.h"

namespace zebx {

// Runs the action and answers what it does. An exception is reported instead of reaching the host,
// and the answer is 0.
template <typename Action>
auto Guarded(const Action& action) -> decltype(action()) {
  try {
    return action();
  } catch (const std::exception& failure) {
    ReportError(failure);
    return 0;
  }
}

}  // namespace zebx
