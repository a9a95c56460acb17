#include "tools/zebtool/files/host_paths.h"

#include <filesystem>
#include <system_error>

#include "platform/framework/file_system.h"
#include "platform/os/files/drives.h"
#include "tools/zebtool/console/console.h"

namespace zebtool {

namespace fs = std::filesystem;
using namespace zebx;

std::string ToHostPath(const std::string& path) {
  const auto host_path = os::HostPath(path);
  if (!host_path) {
    throw JobError("no drive is mounted for '" + path + "'; mount it with ZEBX_DRIVES");
  }
  return *host_path;
}

std::string WhyNotReadable(const std::string& host_path) {
  std::error_code ignored;
  if (!fs::exists(host_path, ignored)) return "it does not exist";
  if (fs::is_directory(host_path, ignored)) return "it is a directory";
  return "reading it is not allowed";
}

std::string WhyNotWritable(const std::string& host_path, const std::string& failure) {
  std::error_code ignored;
  if (fs::is_directory(host_path, ignored)) return "it is a directory";
  const fs::path folder = fs::absolute(host_path, ignored).parent_path();
  if (!fs::is_directory(folder, ignored)) return "its directory does not exist";
  return failure;
}

void MakeDirectories(const std::string& path) {
  std::error_code error;
  fs::create_directories(ToHostPath(path), error);
  if (error) throw JobError("cannot make the directory '" + path + "': " + error.message());
}

void RefuseSameFile(const std::string& input, const std::string& output) {
  if (CurrentFileSystem().IsSameFile(input, output)) {
    throw JobError("'" + output + "' is the input; give the output another name");
  }
}

}  // namespace zebtool
