#include "tools/zebtool/files/output_file.h"

#include <filesystem>
#include <utility>

#include "platform/framework/file_exception.h"
#include "platform/framework/file_system.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/files/host_paths.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr int kMostTemporaries = 1000;

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw JobError("cannot write '" + path + "': " + why);
}

bool IsThere(const std::string& path) {
  return CurrentFileSystem().LinkStatus(path).has_value();
}

// The file system's own path of what is to be written, links resolved. Throws JobError for what no
// output may replace.
std::string TargetOf(const std::string& path, Existing existing) {
  const auto target = CurrentFileSystem().RealPath(path);
  if (!target) Refuse(path, "no drive is mounted there; mount it with ZEBX_DRIVES");
  const auto status = CurrentFileSystem().Status(*target);
  if (!status) {
    if (IsThere(path)) Refuse(path, "it is a link that leads nowhere");
    return *target;
  }
  if (status->m_is_directory) Refuse(path, "it is a directory");
  std::error_code ignored;
  if (std::filesystem::is_other(*target, ignored)) {
    Refuse(path, "it is a device or a pipe, not a file");
  }
  if (existing == Existing::kRefuse) Refuse(path, "it is there already; --force replaces it");
  if (status->m_is_read_only) Refuse(path, "it is there already and write-protected");
  return *target;
}

// Ends as the path does that was asked for, whatever a link leads to: what writes a file may go by
// its extension.
std::string TemporaryOf(const std::filesystem::path& target, const std::string& path, int number) {
  const std::size_t dot = path.find_last_of("./\\");
  const bool has_extension = dot != std::string::npos && path[dot] == '.';
  return (target.parent_path() / target.stem()).string() + ".part" +
         (number == 1 ? "" : std::to_string(number)) + (has_extension ? path.substr(dot) : "");
}

// Makes an empty file where nothing was. Throws CFileException.
void MakeNew(const std::string& path) {
  FileOpenMode mode;
  mode.m_write = mode.m_create = mode.m_new = true;
  CurrentFileSystem().Open(path, mode)->Close();
}

}  // namespace

OutputFile::OutputFile(std::string path, Existing existing)
    : m_path(std::move(path)), m_existing(existing), m_target(TargetOf(m_path, existing)) {
  for (int number = 1; number <= kMostTemporaries; ++number) {
    m_temporary = TemporaryOf(m_target, m_path, number);
    try {
      MakeNew(m_temporary);
      return;
    } catch (const CFileException& failure) {
      if (!IsThere(m_temporary)) Refuse(m_path, WhyNotWritable(m_target, failure.what()));
    }
  }
  Refuse(m_path, "too many unfinished files like '" + m_temporary + "' are there");
}

OutputFile::~OutputFile() {
  if (!m_is_finished && !m_is_kept) CurrentFileSystem().DeleteFile(m_temporary, nullptr);
}

void OutputFile::Finish() {
  bool is_claimed = false;
  try {
    // The name is taken first, so that nothing that has appeared under it meanwhile is replaced.
    if (m_existing == Existing::kRefuse) {
      MakeNew(m_target);
      is_claimed = true;
    }
    CurrentFileSystem().Replace(m_target, m_temporary);
  } catch (const CFileException& failure) {
    if (is_claimed) CurrentFileSystem().DeleteFile(m_target, nullptr);
    m_is_kept = true;
    throw JobError("cannot give '" + m_temporary + "', which is whole, the name '" + m_path +
                   "': " + failure.what());
  }
  m_is_finished = true;
}

void CheckOutput(const std::string& path, Existing existing) {
  static_cast<void>(TargetOf(path, existing));
}

void AddForceOption(const Command& command, bool& force) {
  command.Flag("--force", force, "replaces an output file that is there already");
  command.Explain(
      "An output is written beside its place under a temporary name (OUT.part) and gets its own "
      "when it is whole. Without --force nothing that is there is replaced. A link stands for the "
      "file that it leads to. Directories, devices and write-protected files are refused.");
}

}  // namespace zebtool
