// Sound files of every kind that libsndfile knows: WAV, FLAC, OGG and more come in, WAV goes out.
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/framework/types.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/files/output_file.h"

namespace zebtool {

// Speech is recorded with this many samples a second, one channel.
inline constexpr DWORD kSpeechRate = 8000;

struct SoundFileCloser {
  void operator()(SNDFILE* file) const;
};
using SoundFileHandle = std::unique_ptr<SNDFILE, SoundFileCloser>;

class SoundReader {
 public:
  // Opens a file or, for "-", the console's input. What cannot be read at any place, a pipe for
  // one, is copied into a temporary file first. Throws JobError for what is no sound, or has not
  // kMinRate to kMaxRate samples a second.
  SoundReader(const std::string& path, Console& console);

  DWORD Rate() const { return m_rate; }
  // Fills `into` with the next samples, all channels mixed to one, and returns the count, smaller
  // only at the end of the sound. A file that ends early ends the sound.
  std::size_t Read(std::span<std::int16_t> into);

  static constexpr DWORD kMinRate = 1000;
  static constexpr DWORD kMaxRate = 384000;

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
  };

  std::unique_ptr<std::FILE, CloseFile> m_copy;  // of what is no file
  SoundFileHandle m_file;
  DWORD m_rate = 0;
  std::size_t m_channels = 0;
  std::vector<float> m_buffer;
};

// Writes 16-bit mono speech as a WAV file.
class SpeechWriter {
 public:
  // Throws JobError when the file cannot be made.
  SpeechWriter(const std::string& path, Existing existing);

  // Throw JobError when the disk does not take it.
  void Write(std::span<const std::int16_t> samples);
  // Without it the file is gone with this object.
  void Finish();

  ULONGLONG Samples() const { return m_samples; }

 private:
  [[noreturn]] void Fail() const;

  OutputFile m_output;
  SoundFileHandle m_file;
  ULONGLONG m_samples = 0;
};

}  // namespace zebtool
