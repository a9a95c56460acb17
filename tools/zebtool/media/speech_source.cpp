#include "tools/zebtool/media/speech_source.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace zebtool {
namespace {

// Zero crossings of the low-pass to each side: enough for speech, cheap enough to work out anew for
// every sample.
constexpr double kZeroCrossings = 8;

// A sinc under a raised cosine; `x` in zero crossings.
double LowPass(double x) {
  if (std::abs(x) >= kZeroCrossings) return 0;
  const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * x / kZeroCrossings);
  if (std::abs(x) < 1e-9) return window;
  return window * std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

}  // namespace

SpeechSource::SpeechSource(SoundReader& reader)
    : m_reader(reader),
      m_step(static_cast<double>(reader.Rate()) / kSpeechRate),
      m_width(kZeroCrossings * std::max(1.0, m_step)) {}

std::size_t SpeechSource::Read(std::span<std::int16_t> into) {
  if (m_reader.Rate() == kSpeechRate) return m_reader.Read(into);
  std::size_t count = 0;
  while (count < into.size() && Interpolate(into[count])) ++count;
  return count;
}

bool SpeechSource::Interpolate(std::int16_t& sample) {
  const ULONGLONG scaled = m_output * m_reader.Rate();
  const ULONGLONG index = scaled / kSpeechRate;
  const double centre =
      static_cast<double>(index) + static_cast<double>(scaled % kSpeechRate) / kSpeechRate;
  if (!LoadUpTo(index + static_cast<ULONGLONG>(m_width) + 1)) return false;
  if (index >= m_window_start + m_window.size()) return false;

  const double spread = std::max(1.0, m_step);
  double sum = 0;
  double weights = 0;
  const auto first = static_cast<LONGLONG>(std::ceil(centre - m_width));
  const auto last = static_cast<LONGLONG>(std::floor(centre + m_width));
  for (LONGLONG at = first; at <= last; ++at) {
    const double weight = LowPass((static_cast<double>(at) - centre) / spread);
    sum += weight * InputAt(at);
    weights += weight;
  }
  sample = static_cast<std::int16_t>(std::lround(std::clamp(sum / weights, -32768.0, 32767.0)));
  ++m_output;
  const auto keep_from = static_cast<ULONGLONG>(std::max<LONGLONG>(first, 0));
  while (m_window_start < keep_from && !m_window.empty()) {
    m_window.pop_front();
    ++m_window_start;
  }
  return true;
}

// Makes input sample `last` available, or everything there is; false when nothing is left at all.
bool SpeechSource::LoadUpTo(ULONGLONG last) {
  std::array<std::int16_t, 512> buffer{};
  while (!m_ended && m_window_start + m_window.size() <= last) {
    const std::size_t count = m_reader.Read(buffer);
    m_window.insert(m_window.end(), buffer.begin(),
                    buffer.begin() + static_cast<std::ptrdiff_t>(count));
    m_ended = count < buffer.size();
  }
  return !m_window.empty();
}

// Before the beginning and behind the end the sound goes on as silence.
double SpeechSource::InputAt(LONGLONG index) const {
  const LONGLONG at = index - static_cast<LONGLONG>(m_window_start);
  if (at < 0 || at >= static_cast<LONGLONG>(m_window.size())) return 0;
  return m_window[static_cast<std::size_t>(at)];
}

}  // namespace zebtool
