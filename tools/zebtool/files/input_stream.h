// What tools read beside recordings: files, pipes and the standard input.
#pragma once

#include <fstream>
#include <span>
#include <string>

#include "platform/framework/types.h"
#include "tools/zebtool/console/console.h"

namespace zebtool {

// Stands for the standard input or output.
inline constexpr const char* kStandardStream = "-";

// A file, a pipe or, for "-", the console's input. Reads forward only.
class InputStream {
 public:
  // Throws JobError when it cannot be opened.
  InputStream(const std::string& path, Console& console);

  // Fills `into` and returns the count, smaller only at the end.
  std::size_t Read(std::span<BYTE> into);
  // Up to the line break, which is taken but not returned; cut after `limit` characters, in which
  // case IsLineWhole() is false, as it is at the end.
  std::string ReadLine(std::size_t limit);
  bool IsLineWhole() const { return m_line_whole; }

  // For messages.
  const std::string& Name() const { return m_name; }

 private:
  std::ifstream m_file;
  std::istream* m_stream;
  std::string m_name;
  bool m_line_whole = false;
};

}  // namespace zebtool
