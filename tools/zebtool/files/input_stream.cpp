#include "tools/zebtool/files/input_stream.h"

#include <filesystem>

#include "tools/zebtool/files/host_paths.h"

namespace zebtool {

InputStream::InputStream(const std::string& path, Console& console)
    : m_stream(&console.in), m_name("the standard input") {
  if (path == kStandardStream) return;
  const std::string host_path = ToHostPath(path);
  m_name = "'" + path + "'";
  m_file.open(host_path, std::ios::binary);
  std::error_code ignored;
  if (!m_file || std::filesystem::is_directory(host_path, ignored)) {
    throw JobError("cannot open " + m_name + ": " + WhyNotReadable(host_path));
  }
  m_stream = &m_file;
}

std::size_t InputStream::Read(std::span<BYTE> into) {
  m_stream->read(reinterpret_cast<char*>(into.data()), static_cast<std::streamsize>(into.size()));
  return static_cast<std::size_t>(m_stream->gcount());
}

std::string InputStream::ReadLine(std::size_t limit) {
  std::string line;
  m_line_whole = false;
  while (line.size() < limit) {
    const int character = m_stream->get();
    if (character == std::istream::traits_type::eof()) break;
    if (character == '\n') {
      m_line_whole = true;
      break;
    }
    line += static_cast<char>(character);
  }
  return line;
}

}  // namespace zebtool
