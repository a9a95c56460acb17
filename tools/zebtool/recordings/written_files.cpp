#include "tools/zebtool/recordings/written_files.h"

#include <nlohmann/json.hpp>

#include "tools/zebtool/console/text.h"

namespace zebtool {

ULONGLONG TotalBytes(const std::vector<WrittenFile>& files) {
  ULONGLONG bytes = 0;
  for (const WrittenFile& file : files) bytes += file.bytes;
  return bytes;
}

void PrintFiles(std::ostream& out, std::span<const WrittenFile> files) {
  for (const WrittenFile& file : files) {
    out << file.path << ": " << Plural(file.frames, "frame") << " in "
        << Plural(static_cast<ULONGLONG>(file.blocks), "block") << ", "
        << Plural(file.bytes, "byte") << '\n';
  }
}

void PutFiles(Json& json, const std::vector<WrittenFile>& files) {
  json["files"] = Json::array();
  for (const WrittenFile& file : files) {
    json["files"].push_back({{"path", file.path},
                             {"frames", file.frames},
                             {"blocks", file.blocks},
                             {"bytes", file.bytes}});
  }
}

}  // namespace zebtool
