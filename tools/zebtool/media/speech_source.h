// Sound of any rate as 8 kHz mono speech.
#pragma once

#include <cstdint>
#include <deque>
#include <span>

#include "tools/zebtool/media/sound_file.h"

namespace zebtool {

// Resamples while reading; memory does not depend on the length. Borrows the reader.
class SpeechSource {
 public:
  explicit SpeechSource(SoundReader& reader);

  // Fills `into` with the next samples and returns the count, smaller only at the end of the sound.
  std::size_t Read(std::span<std::int16_t> into);

 private:
  bool Interpolate(std::int16_t& sample);
  bool LoadUpTo(ULONGLONG last);
  double InputAt(LONGLONG index) const;

  SoundReader& m_reader;
  double m_step;                      // input samples for one of output
  double m_width;                     // reach of the low-pass to each side, in input samples
  std::deque<std::int16_t> m_window;  // input samples from m_window_start on
  ULONGLONG m_window_start = 0;
  ULONGLONG m_output = 0;  // number of the next output sample
  bool m_ended = false;
};

}  // namespace zebtool
