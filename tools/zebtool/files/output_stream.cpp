#include "tools/zebtool/files/output_stream.h"

#include <filesystem>

#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/input_stream.h"

namespace zebtool {
namespace {

bool TakesStreams(const std::string& host_path) {
  std::error_code error;
  const auto status = std::filesystem::status(host_path, error);
  return std::filesystem::is_fifo(status) || std::filesystem::is_character_file(status);
}

}  // namespace

OutputStream::OutputStream(const std::string& path, Existing existing, Console& console)
    : m_name("the standard output"), m_stream(&console.out) {
  if (path == kStandardStream) return;
  m_name = "'" + path + "'";
  std::string host_path = ToHostPath(path);
  if (!TakesStreams(host_path)) {
    m_output.emplace(path, existing);
    host_path = m_output->TemporaryPath();
  }
  m_file.open(host_path, std::ios::binary);
  if (!m_file)
    throw JobError("cannot write " + m_name + ": " +
                   WhyNotWritable(host_path, "it cannot be opened"));
  m_stream = &m_file;
}

void OutputStream::Check() {
  if (!*m_stream) {
    throw JobError("cannot write " + m_name +
                   ": the disk is full or failing, or the reader of the pipe is gone");
  }
}

void OutputStream::Write(std::span<const BYTE> bytes) {
  m_stream->write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
  Check();
}

void OutputStream::WriteText(const std::string& text) {
  Write({reinterpret_cast<const BYTE*>(text.data()), text.size()});
}

void OutputStream::Finish() {
  m_stream->flush();
  if (m_file.is_open()) m_file.close();
  Check();
  if (m_output) m_output->Finish();
}

}  // namespace zebtool
