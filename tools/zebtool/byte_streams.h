// The files that tools read and write beside recordings, pipes and the standard streams included.
#pragma once

#include <fstream>
#include <span>
#include <string>

#include "platform/framework/types.h"
#include "tools/zebtool/console.h"

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
  // Reads over `count` bytes, or as many as there are.
  void Skip(ULONGLONG count);

  // For messages.
  const std::string& Name() const { return m_name; }

 private:
  std::ifstream m_file;
  std::istream* m_stream;
  std::string m_name;
  bool m_line_whole = false;
};

// A file, a pipe or, for "-", the console's output. A regular file that was not finished is removed
// again, so that nobody takes half an output for a whole one.
class OutputStream {
 public:
  // Creates or empties. Throws JobError when that is not possible.
  OutputStream(const std::string& path, Console& console);
  ~OutputStream();
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  // Throw JobError when the bytes are not taken.
  void Write(std::span<const BYTE> bytes);
  void WriteText(const std::string& text);
  // Writes over the beginning and goes back to the end. Not for pipes.
  void Rewrite(std::span<const BYTE> bytes);
  // Hands everything to the system.
  void Finish();

 private:
  void Check();

  std::ofstream m_file;
  std::ostream* m_stream;
  std::string m_name;
  std::string m_host_path;  // empty for the standard output
  bool m_finished = false;
};

// The host path behind a library path; throws JobError when its drive is not mounted.
std::string ToHostPath(const std::string& path);

// Throws JobError when writing `output` would destroy `input`.
void RefuseSameFile(const std::string& input, const std::string& output);

}  // namespace zebtool
