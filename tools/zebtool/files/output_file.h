// Where a command's output goes: never over anything that the command did not make itself.
#pragma once

#include <string>
#include <string_view>

namespace zebtool {

class Command;

// What becomes of a file that is there already.
enum class Existing : bool { kRefuse = false, kReplace = true };

// One file on its way to its name. It is written beside its place under a temporary name, for
// clip.zebz "clip.part.zebz" or, when that is there, "clip.part2.zebz" and so on, which nobody else
// can have made; Finish gives it its name. What stands under the name is a regular file or nothing,
// before and after: a file that is there is refused or, with Existing::kReplace, replaced when the
// new one is whole; one that may not be written, a directory, a device and a pipe are refused in
// any case. A link stands for what it leads to.
class OutputFile {
 public:
  // Makes the empty temporary file. Throws JobError.
  OutputFile(std::string path, Existing existing);
  // Removes the temporary file unless it was finished or is to be kept.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // The name asked for, for messages.
  const std::string& Path() const { return m_path; }
  // The temporary file; on a disk of the host its own path.
  const std::string& TemporaryPath() const { return m_temporary; }
  // From now on the temporary file stays when the output is not finished: it is of use.
  void KeepUnfinished() { m_is_kept = true; }
  // Gives the file its name. Throws JobError when that cannot be done; the file then keeps its
  // temporary name, and the message says so.
  void Finish();

 private:
  std::string m_path;
  Existing m_existing;
  std::string m_target;  // what is to be written, links resolved
  std::string m_temporary;
  bool m_is_kept = false;
  bool m_is_finished = false;
};

// Throws JobError as making an OutputFile would, and makes none: for jobs that ask before a long
// work, or before the first of several files.
void CheckOutput(const std::string& path, Existing existing);

// The option --force, and the lines about outputs for the help.
void AddForceOption(const Command& command, bool& force);

}  // namespace zebtool
