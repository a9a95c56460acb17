#include "tools/zebtool/recordings/snapshot_file.h"

#include "platform/framework/file.h"
#include "platform/framework/file_system.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/media/png_file.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::string_view kBmpExtension = ".bmp";
constexpr std::string_view kPngExtension = ".png";

}  // namespace

std::string SnapshotPath(const std::string& path) {
  const bool has_extension = path.ends_with(kBmpExtension) || path.ends_with(kPngExtension);
  return has_extension ? path : path + std::string(kBmpExtension);
}

void SaveSnapshot(CImage& image, const std::string& path, Existing existing) {
  const std::string target = SnapshotPath(path);
  if (target.ends_with(kPngExtension)) {
    WritePng(target, existing, image);
    return;
  }
  OutputFile output(target, existing);
  try {
    image.SaveImageAs(kImageBmp, output.TemporaryPath());
  } catch (const CFileException& failure) {
    throw JobError("cannot write '" + target + "': " + failure.what());
  }
  const auto status = CurrentFileSystem().Status(output.TemporaryPath());
  if (!status || status->m_length == 0) throw JobError("cannot write '" + target + "'");
  output.Finish();
}

}  // namespace zebtool
