// How findings about a recording, and what recovery did to it, are told to people.
#pragma once

#include <string>

#include "recovery/recording_check.h"
#include "tools/zebtool/console/json_text.h"

namespace zebtool {

// "damage at 1234 (0x4d2): what is wrong"
std::string FindingLine(const zebx::Finding& finding);
// The finding's fields and the same text.
Json JsonOf(const zebx::Finding& finding);

// One word: "whole", "unfinished" or "damaged".
const char* StateOf(const zebx::CheckSummary& summary);

}  // namespace zebtool
