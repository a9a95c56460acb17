// How findings about a recording are told.
#pragma once

#include <string>

#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/recording_scan.h"

namespace zebtool {

// "damage at 1234 (0x4d2): what is wrong"
std::string FindingLine(const Finding& finding);
void PutFinding(JsonWriter& json, const Finding& finding);

// One word: "whole", "unfinished" or "damaged".
const char* StateOf(const ScanSummary& summary);

}  // namespace zebtool
