// What became of the files of a job that writes recordings.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "platform/framework/types.h"
#include "tools/zebtool/console/json_text.h"

namespace zebtool {

struct WrittenFile {
  std::string path;
  ULONGLONG frames = 0;
  int blocks = 0;  // with frames
  ULONGLONG bytes = 0;
};

ULONGLONG TotalBytes(const std::vector<WrittenFile>& files);
// A line each.
void PrintFiles(std::ostream& out, std::span<const WrittenFile> files);
// The array "files".
void PutFiles(Json& json, const std::vector<WrittenFile>& files);

}  // namespace zebtool
