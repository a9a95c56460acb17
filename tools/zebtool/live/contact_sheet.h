// All live windows as one picture.
#pragma once

#include <span>
#include <string>

#include "platform/framework/geometry.h"
#include "platform/framework/types.h"
#include "tools/zebtool/files/output_file.h"

namespace zebtool {

// Writes the screen with what the windows show now, as a PNG file. Throws JobError.
void SaveContactSheet(const std::string& path, Existing existing, CSize screen,
                      std::span<const HWND> windows);

}  // namespace zebtool
