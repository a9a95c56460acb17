// A WAV file as a sound without an end.
#pragma once

#include <span>
#include <vector>

#include "platform/framework/file.h"
#include "platform/framework/types.h"

namespace zebx::zebdev {

// Plays PCM of 8 or 16 bits, one or two channels and any rate up to kMaxRate as one channel of 8000
// samples a second, over and over: channels are mixed, and samples between samples interpolated.
// A few KB of the file are in memory at a time. A file that is cut meanwhile becomes shorter. Used
// by one thread at a time.
class WavLoop {
 public:
  static constexpr DWORD kMaxRate = 768000;

  // Opens a file with at least one whole sample. Empty, or what is wrong with it. A data chunk that
  // says more than the file holds ends with the file.
  CString Open(const CString& path);

  // Fills `samples` with what goes on where the last call ended, with silence from a read that
  // fails on. False, with nothing filled in, when the file has no samples any more.
  bool Read(std::span<std::int16_t> samples);

 private:
  CString FindChunks();
  CString TakeFormat(std::span<const BYTE> chunk);
  void Advance();
  // The sample at an index, mixed; 0, with the loop cut there, when the file does not hold it.
  // Throws when it cannot be read.
  std::int16_t SampleAt(ULONGLONG index);

  CFile m_file;
  DWORD m_rate = 0;
  std::size_t m_channels = 0;
  std::size_t m_bytes_per_value = 0;
  ULONGLONG m_data_offset = 0;
  ULONGLONG m_count = 0;  // samples of the loop, a sample being one value of each channel

  // Between two neighbours, m_part / 8000 behind the first, whose index is m_index.
  ULONGLONG m_index = 0;
  DWORD m_part = 0;
  std::int16_t m_here = 0;
  std::int16_t m_next = 0;
  bool m_is_begun = false;

  std::vector<BYTE> m_block;  // what was read last
  ULONGLONG m_block_index = 0;
  ULONGLONG m_block_samples = 0;
};

}  // namespace zebx::zebdev
