// What tools write as a stream: a file, a pipe or the standard output.
#pragma once

#include <fstream>
#include <optional>
#include <span>
#include <string>

#include "platform/framework/types.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/files/output_file.h"

namespace zebtool {

// A pipe or a character device is written into and otherwise left alone; "-" is the console's
// output; everything else is an OutputFile, and gone when it was not finished, so that nobody takes
// half an output for a whole one.
class OutputStream {
 public:
  // Throws JobError when it cannot be made.
  OutputStream(const std::string& path, Existing existing, Console& console);
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  // Throw JobError when the bytes are not taken.
  void Write(std::span<const BYTE> bytes);
  void WriteText(const std::string& text);
  // Hands everything to the system, and gives a file its name.
  void Finish();

 private:
  void Check();

  std::string m_name;  // for messages
  std::optional<OutputFile> m_output;
  std::ofstream m_file;
  std::ostream* m_stream;
};

}  // namespace zebtool
