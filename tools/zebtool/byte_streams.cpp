#include "tools/zebtool/byte_streams.h"

#include <filesystem>

#include "platform/framework/file_system.h"
#include "platform/os/files/drives.h"

using namespace zebx;

namespace zebtool {
namespace {

namespace fs = std::filesystem;

std::streamsize Signed(std::size_t count) {
  return static_cast<std::streamsize>(count);
}

std::string WhyNotReadable(const std::string& host_path) {
  std::error_code ignored;
  if (!fs::exists(host_path, ignored)) return "it does not exist";
  if (fs::is_directory(host_path, ignored)) return "it is a directory";
  return "reading it is not allowed";
}

std::string WhyNotWritable(const std::string& host_path) {
  std::error_code ignored;
  if (fs::is_directory(host_path, ignored)) return "it is a directory";
  const fs::path folder = fs::absolute(host_path, ignored).parent_path();
  if (!fs::is_directory(folder, ignored)) return "its directory does not exist";
  return "writing there is not allowed";
}

}  // namespace

std::string ToHostPath(const std::string& path) {
  const auto host_path = os::HostPath(path);
  if (!host_path) {
    throw JobError("no drive is mounted for '" + path + "'; mount it with ZEBX_DRIVES");
  }
  return *host_path;
}

void RefuseSameFile(const std::string& input, const std::string& output) {
  if (CurrentFileSystem().IsSameFile(input, output)) {
    throw JobError("'" + output + "' is the input; give the output another name");
  }
}

InputStream::InputStream(const std::string& path, Console& console)
    : m_stream(&console.in), m_name("the standard input") {
  if (path == kStandardStream) return;
  const std::string host_path = ToHostPath(path);
  m_name = "'" + path + "'";
  m_file.open(host_path, std::ios::binary);
  std::error_code ignored;
  if (!m_file || fs::is_directory(host_path, ignored)) {
    throw JobError("cannot open " + m_name + ": " + WhyNotReadable(host_path));
  }
  m_stream = &m_file;
}

std::size_t InputStream::Read(std::span<BYTE> into) {
  m_stream->read(reinterpret_cast<char*>(into.data()), Signed(into.size()));
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

void InputStream::Skip(ULONGLONG count) {
  // In steps: the stream counts in signed numbers, and some values mean "no limit".
  constexpr ULONGLONG kStep = 1 << 20;
  for (; count > 0 && *m_stream; count -= std::min(count, kStep)) {
    m_stream->ignore(static_cast<std::streamsize>(std::min(count, kStep)));
  }
}

OutputStream::OutputStream(const std::string& path, Console& console)
    : m_stream(&console.out), m_name("the standard output") {
  if (path == kStandardStream) return;
  m_name = "'" + path + "'";
  m_host_path = ToHostPath(path);
  m_file.open(m_host_path, std::ios::binary | std::ios::trunc);
  if (!m_file) throw JobError("cannot create " + m_name + ": " + WhyNotWritable(m_host_path));
  m_stream = &m_file;
}

OutputStream::~OutputStream() {
  if (m_finished || m_host_path.empty()) return;
  m_file.close();
  std::error_code ignored;
  if (fs::is_regular_file(m_host_path, ignored)) fs::remove(m_host_path, ignored);
}

void OutputStream::Check() {
  if (!*m_stream) {
    throw JobError("cannot write " + m_name +
                   ": the disk is full or failing, or the reader of the pipe is gone");
  }
}

void OutputStream::Write(std::span<const BYTE> bytes) {
  m_stream->write(reinterpret_cast<const char*>(bytes.data()), Signed(bytes.size()));
  Check();
}

void OutputStream::WriteText(const std::string& text) {
  m_stream->write(text.data(), Signed(text.size()));
  Check();
}

void OutputStream::Rewrite(std::span<const BYTE> bytes) {
  m_stream->seekp(0);
  Write(bytes);
  m_stream->seekp(0, std::ios::end);
  Check();
}

void OutputStream::Finish() {
  m_stream->flush();
  if (!m_host_path.empty()) m_file.close();
  Check();
  m_finished = true;
}

}  // namespace zebtool
