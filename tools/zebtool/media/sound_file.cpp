#include "tools/zebtool/media/sound_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/input_stream.h"

namespace zebtool {
namespace {

[[noreturn]] void Refuse(const std::string& name, const std::string& why) {
  throw JobError("cannot read " + name + ": " + why +
                 "; 'ffmpeg -i SOUND -ar 8000 -ac 1 -c:a pcm_s16le OUT.wav' makes one that fits");
}

// Everything that the stream has, in a file that is gone when it is closed.
std::FILE* CopyOf(InputStream& input) {
  std::FILE* const copy = std::tmpfile();
  if (copy == nullptr) throw JobError("cannot make a temporary file for " + input.Name());
  std::array<BYTE, 65536> bytes{};
  std::size_t count = bytes.size();
  while (count == bytes.size()) {
    count = input.Read(bytes);
    if (std::fwrite(bytes.data(), 1, count, copy) < count) break;
  }
  if (std::fflush(copy) != 0 || std::ferror(copy) != 0) {
    static_cast<void>(std::fclose(copy));
    throw JobError("cannot copy " + input.Name() + " into a temporary file: the disk is full");
  }
  std::rewind(copy);
  return copy;
}

}  // namespace

void SoundFileCloser::operator()(SNDFILE* file) const {
  sf_close(file);
}

SoundReader::SoundReader(const std::string& path, Console& console) {
  InputStream input(path, console);  // says why, when it cannot be opened at all
  SF_INFO info{};
  std::error_code ignored;
  if (path != kStandardStream && std::filesystem::is_regular_file(ToHostPath(path), ignored)) {
    m_file.reset(sf_open(ToHostPath(path).c_str(), SFM_READ, &info));
  } else {
    m_copy.reset(CopyOf(input));
    m_file.reset(sf_open_fd(fileno(m_copy.get()), SFM_READ, &info, SF_FALSE));
  }
  if (m_file == nullptr) {
    Refuse(input.Name(), "it is no sound file that is known here (WAV, FLAC, OGG and others are)");
  }
  m_rate = static_cast<DWORD>(info.samplerate);
  m_channels = static_cast<std::size_t>(info.channels);
  if (info.samplerate < 0 || m_rate < kMinRate || m_rate > kMaxRate) {
    Refuse(input.Name(), std::to_string(info.samplerate) + " samples a second cannot be");
  }
}

std::size_t SoundReader::Read(std::span<std::int16_t> into) {
  constexpr float kFullScale = 32768;
  m_buffer.resize(into.size() * m_channels);
  const auto count = static_cast<std::size_t>(std::max<sf_count_t>(
      sf_readf_float(m_file.get(), m_buffer.data(), static_cast<sf_count_t>(into.size())), 0));
  const float* sample = m_buffer.data();
  for (std::size_t at = 0; at < count; ++at) {
    float sum = 0;
    for (std::size_t channel = 0; channel < m_channels; ++channel) sum += *sample++;
    const float mixed = sum * kFullScale / static_cast<float>(m_channels);
    // What is no number has no loudness.
    into[at] = std::isnan(mixed) ? std::int16_t{0}
                                 : static_cast<std::int16_t>(
                                       std::lround(std::clamp(mixed, -kFullScale, kFullScale - 1)));
  }
  return count;
}

SpeechWriter::SpeechWriter(const std::string& path, Existing existing) : m_output(path, existing) {
  SF_INFO info{};
  info.samplerate = static_cast<int>(kSpeechRate);
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  m_file.reset(sf_open(m_output.TemporaryPath().c_str(), SFM_WRITE, &info));
  if (m_file == nullptr) Fail();
}

void SpeechWriter::Fail() const {
  throw JobError("cannot write '" + m_output.Path() + "': " + sf_strerror(m_file.get()));
}

void SpeechWriter::Write(std::span<const std::int16_t> samples) {
  const auto count = static_cast<sf_count_t>(samples.size());
  if (sf_write_short(m_file.get(), samples.data(), count) < count) Fail();
  m_samples += samples.size();
}

void SpeechWriter::Finish() {
  sf_command(m_file.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
  if (sf_error(m_file.get()) != SF_ERR_NO_ERROR) Fail();
  if (sf_close(m_file.release()) != SF_ERR_NO_ERROR) Fail();
  m_output.Finish();
}

}  // namespace zebtool
