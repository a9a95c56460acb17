// Numbers, offsets and moments as people read and type them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/framework/time.h"
#include "platform/framework/types.h"

namespace zebtool {

// "1,234,567"
std::string FormatCount(ULONGLONG number);
// "123 (0x7b)"
std::string FormatOffset(ULONGLONG offset);
// With a point whatever the locale.
std::string FormatDecimals(double number, int decimals);
// "1 frame", "2 frames"
std::string Plural(ULONGLONG count, std::string_view noun);
// Local time, "2024-05-01 08:30:00".
std::string FormatTime(CTime time);
// Its local day, "2024-05-01".
std::string FormatDay(CTime time);

// A moment of local time, "YYYY-MM-DD HH:MM:SS"; nothing for another form or a day or hour that
// does not exist.
std::optional<CTime> ParseTime(std::string_view text);

// A moment of a recording that begins at `begin`, in milliseconds from there (negative before it):
// "YYYY-MM-DD HH:MM:SS", "HH:MM:SS" on the day of the beginning, or "+SECONDS" with up to three
// decimals. Nothing for another form.
std::optional<LONGLONG> ParseMomentMs(std::string_view text, CTime begin);

}  // namespace zebtool
