#include "tools/zebtool/snapshot_file.h"

#include "platform/framework/file.h"
#include "platform/framework/file_system.h"
#include "tools/zebtool/byte_streams.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::string_view kExtension = ".bmp";

}  // namespace

std::string SnapshotPath(const std::string& path) {
  return path.ends_with(kExtension) ? path : path + std::string(kExtension);
}

void SaveSnapshot(CImage& image, const std::string& path, Console& console) {
  const std::string output = SnapshotPath(path);
  OutputStream created(output, console);  // says why it cannot be, and removes what is not finished
  try {
    image.SaveImageAs(kImageBmp, output);
  } catch (const CFileException& failure) {
    throw JobError("cannot write '" + output + "': " + failure.what());
  }
  const auto status = CurrentFileSystem().Status(output);
  if (!status || status->m_length == 0) throw JobError("cannot write '" + output + "'");
  created.Finish();
}

}  // namespace zebtool
