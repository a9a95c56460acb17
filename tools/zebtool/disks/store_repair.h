// zebtool store repair: finishing the recordings that a crash left unfinished.
#pragma once

#include <string>
#include <vector>

#include "tools/zebtool/console/console.h"

namespace zebtool {

// Finishes the unfinished recordings in each directory and below it, and says what became of them.
// kExitGood when none is left that needs somebody: damaged, not readable, or in a directory that
// cannot be listed.
int RepairDirectories(const std::vector<std::string>& directories, bool json, Console& console);

}  // namespace zebtool
