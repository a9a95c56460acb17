#include "tools/zebtool/written_files.h"

#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/text.h"

namespace zebtool {

ULONGLONG TotalBytes(const std::vector<WrittenFile>& files) {
  ULONGLONG bytes = 0;
  for (const WrittenFile& file : files) bytes += file.bytes;
  return bytes;
}

void PrintFiles(std::ostream& out, const std::vector<WrittenFile>& files) {
  for (const WrittenFile& file : files) {
    out << file.path << ": " << Plural(file.frames, "frame") << " in "
        << Plural(static_cast<ULONGLONG>(file.blocks), "block") << ", "
        << Plural(file.bytes, "byte") << '\n';
  }
}

void PutFiles(JsonWriter& json, const std::vector<WrittenFile>& files) {
  json.BeginArray("files");
  for (const WrittenFile& file : files) {
    json.BeginObject();
    json.Value("path", file.path);
    json.Value("frames", file.frames);
    json.Value("blocks", file.blocks);
    json.Value("bytes", file.bytes);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace zebtool
