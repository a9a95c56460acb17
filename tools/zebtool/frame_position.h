// Places in a recording as options name them: by block and frame, or by a moment.
#pragma once

#include <optional>
#include <string_view>

#include "platform/framework/time.h"
#include "tools/zebtool/options.h"

class CZebFile;

namespace zebtool {

struct FramePosition {
  int block = 0;
  int index = 0;  // in its block
};

// An option that takes BLOCK or BLOCK:INDEX, both counted from 0; nothing when it was not given.
// Throws UsageError.
std::optional<FramePosition> ReadFramePosition(const Options& options, std::string_view name);
// Throws JobError unless the recording has that frame.
void RequireFrame(const CZebFile& recording, const FramePosition& position);

// An option that takes a moment of a recording which begins at `begin`, in milliseconds from there;
// nothing when it was not given. Throws UsageError.
std::optional<LONGLONG> ReadMomentMs(const Options& options, std::string_view name, CTime begin);

// The line about moments for a subcommand's help.
inline constexpr std::string_view kMomentHelp =
    "TIME is \"YYYY-MM-DD HH:MM:SS\", \"HH:MM:SS\" on the day of the recording's beginning, or\n"
    "\"+SECONDS\" from its beginning, with up to three decimals.";

}  // namespace zebtool
