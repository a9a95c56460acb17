// The operating system's debug output: texts for whoever watches the program run.
#pragma once

#include <functional>
#include <string_view>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

// Receives every text, on the thread that put it out; several threads may at once.
using DebugSink = std::function<void(std::string_view)>;

// Hands a text to the sink in force, without adding a line's end. Any thread may call.
ZEBX_API void OutputDebugString(const CString& text);

// Replaces the sink and returns the one before. An empty sink restores the default, which drops
// every text. Any thread may call.
ZEBX_API DebugSink SetDebugSink(DebugSink sink);

}  // namespace os
