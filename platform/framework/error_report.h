// The standard error report: where a caught exception is shown to the user.
#pragma once

#include <exception>
#include <functional>

#include "platform/framework/export.h"

namespace zebx {

// Receives every reported exception, on the thread that caught it. It must not throw.
using ErrorSink = std::function<void(const std::exception&)>;

// Hands `error` to the sink in force.
ZEBX_API void ReportError(const std::exception& error);

// Replaces the sink and returns the one before. An empty sink restores the default: one line on the
// standard error output. May be called from any thread.
ZEBX_API ErrorSink SetErrorSink(ErrorSink sink);

}  // namespace zebx
