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

// The same text in lines of at most `width` characters, as far as its words allow, each with its
// line break; its own line breaks stay.
std::string FillLines(std::string_view text, std::size_t width);

// The whole of `text` as a decimal number, or nothing.
std::optional<DWORD> ParseNumber(std::string_view text);

// A moment of local time, "YYYY-MM-DD HH:MM:SS"; nothing for another form or a day or hour that
// does not exist.
std::optional<CTime> ParseTime(std::string_view text);
// The noon of a day "YYYY-MM-DD", an hour that every day has.
std::optional<CTime> ParseNoon(const std::string& day);
inline constexpr char kTimeForm[] = "\"YYYY-MM-DD HH:MM:SS\"";  // for messages

// A moment of a recording that begins at `begin`, in milliseconds from there (negative before it):
// "YYYY-MM-DD HH:MM:SS", "HH:MM:SS" on the day of the beginning, or "+SECONDS" with up to three
// decimals. Nothing for another form.
std::optional<LONGLONG> ParseMomentMs(std::string_view text, CTime begin);

}  // namespace zebtool
