// Uncompressed sound in WAV form.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tools/zebtool/byte_streams.h"

namespace zebtool {

// Speech is recorded with this many samples a second, one channel.
inline constexpr DWORD kSpeechRate = 8000;

class WavReader {
 public:
  // Reads up to the samples. Throws JobError for anything but PCM of 8 or 16 bits, one or two
  // channels, kMinRate to kMaxRate samples a second.
  explicit WavReader(InputStream& input);

  DWORD Rate() const { return m_rate; }
  // Fills `into` with the next samples, two channels mixed to one, and returns the count, smaller
  // only at the end of the sound. A file that ends early ends the sound.
  std::size_t Read(std::span<std::int16_t> into);

  static constexpr DWORD kMinRate = 1000;
  static constexpr DWORD kMaxRate = 384000;

 private:
  void ReadFormat(DWORD chunk_bytes);
  std::int16_t SampleAt(const BYTE* bytes) const;
  [[noreturn]] void Fail(const std::string& what) const;

  InputStream& m_input;
  DWORD m_rate = 0;
  std::size_t m_channels = 0;
  std::size_t m_sample_bytes = 0;
  ULONGLONG m_rest = 0;  // bytes of sound not read yet
  std::vector<BYTE> m_bytes;
};

// Writes 16-bit mono speech.
class WavWriter {
 public:
  explicit WavWriter(OutputStream& output);
  void Write(std::span<const std::int16_t> samples);
  ULONGLONG Samples() const { return m_samples; }
  // Puts the lengths into the header. The output is still to be finished.
  void Finish();

 private:
  OutputStream& m_output;
  ULONGLONG m_samples = 0;
  std::vector<BYTE> m_bytes;
};

}  // namespace zebtool
