#include "platform/noxcodec/software/speech_encoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "platform/noxcodec/software/speech_format.h"

namespace zebx::noxcodec {
namespace {

// How many of the best code sequences are followed at once.
constexpr std::size_t kBeamWidth = 12;

// The first steps that are tried lie this far apart.
constexpr int kStartStride = 6;

constexpr int kMaxMagnitude = 7;
constexpr int kSignBit = 8;

// The coefficients that leave the least energy of predicting the samples forwards and backwards,
// order by order. Limited to what a signed byte holds, which also keeps the predictor stable.
SpeechReflections FindReflections(std::span<const std::int16_t> samples) {
  std::vector<double> forward(samples.begin(), samples.end());
  std::vector<double> backward = forward;
  SpeechReflections reflections{};
  for (std::size_t order = 0; order < kSpeechOrder; ++order) {
    double product = 0;
    double energy = 1;
    for (std::size_t i = order + 1; i < samples.size(); ++i) {
      product += forward[i] * backward[i - 1];
      energy += (forward[i] * forward[i] + backward[i - 1] * backward[i - 1]) / 2;
    }
    const double rounded = std::clamp(std::round(product / energy * 128), -127.0, 127.0);
    reflections[order] = static_cast<std::int8_t>(rounded);
    const double reflection = rounded / 128;
    for (std::size_t i = samples.size(); i-- > order + 1;) {
      const double before = forward[i];
      forward[i] -= reflection * backward[i - 1];
      backward[i] = backward[i - 1] - reflection * before;
    }
  }
  return reflections;
}

// A code sequence under trial.
struct Path {
  SpeechState state;
  int start_index;     // the step index it began with
  std::size_t origin;  // the path it continues, by its place in the beam before
  int code;
  std::int64_t squared_error;
};

// Follows the kBeamWidth best sequences from sample to sample: the code that is best for a sample
// may leave a step that is bad for the next ones.
class CodeSearch {
 public:
  explicit CodeSearch(const SpeechPredictor& predictor) : m_predictor(predictor) {
    for (int index = 0; index < kSpeechSteps; index += kStartStride) {
      m_beam.push_back({SpeechState(index), index, 0, 0, 0});
    }
  }

  void Advance(std::int16_t sample) {
    m_candidates.clear();
    for (std::size_t origin = 0; origin < m_beam.size(); ++origin) Extend(origin, sample);
    std::sort(m_candidates.begin(), m_candidates.end(),
              [](const Path& a, const Path& b) { return a.squared_error < b.squared_error; });
    m_beam.clear();
    for (const Path& candidate : m_candidates) {
      if (m_beam.size() == kBeamWidth) break;
      const bool known = std::any_of(m_beam.begin(), m_beam.end(), [&](const Path& path) {
        return path.state == candidate.state;
      });
      if (!known) m_beam.push_back(candidate);
    }
    m_steps.emplace_back();
    for (std::size_t i = 0; i < m_beam.size(); ++i) {
      m_steps.back()[i] = {static_cast<BYTE>(m_beam[i].origin), static_cast<BYTE>(m_beam[i].code)};
    }
  }

  int StartIndex() const { return m_beam.front().start_index; }

  // The codes of the best sequence, one for each sample.
  std::vector<BYTE> Codes() const {
    std::vector<BYTE> codes(m_steps.size());
    std::size_t place = 0;
    for (std::size_t i = m_steps.size(); i-- > 0;) {
      codes[i] = m_steps[i][place].code;
      place = m_steps[i][place].origin;
    }
    return codes;
  }

 private:
  struct Step {
    BYTE origin = 0;
    BYTE code = 0;
  };

  // Continues a path with the magnitude nearest to the sample and the ones beside it.
  void Extend(std::size_t origin, std::int16_t sample) {
    const Path& path = m_beam[origin];
    const int predicted = path.state.Predict(m_predictor);
    const int wanted = sample - predicted;
    const int step = SpeechStep(path.state.StepIndex());
    const int nearest = std::min(std::abs(wanted) * 4 / step, kMaxMagnitude);
    const int sign = wanted < 0 ? kSignBit : 0;
    for (int magnitude = std::max(nearest - 1, 0);
         magnitude <= std::min(nearest + 1, kMaxMagnitude); ++magnitude) {
      Add(origin, sample, predicted, sign | magnitude);
    }
    if (nearest == 0) Add(origin, sample, predicted, sign ^ kSignBit);
  }

  void Add(std::size_t origin, std::int16_t sample, int predicted, int code) {
    Path path = m_beam[origin];
    path.state.Advance(predicted, code);
    const std::int64_t error = path.state.LastSample() - sample;
    path.squared_error += error * error;
    path.origin = origin;
    path.code = code;
    m_candidates.push_back(path);
  }

  const SpeechPredictor& m_predictor;
  std::vector<Path> m_beam;
  std::vector<Path> m_candidates;
  std::vector<std::array<Step, kBeamWidth>> m_steps;
};

}  // namespace

std::span<const BYTE> SpeechEncoder::Encode(std::span<const std::int16_t> samples) {
  const SpeechReflections reflections = FindReflections(samples);
  const SpeechPredictor predictor(reflections);
  CodeSearch search(predictor);
  for (const std::int16_t sample : samples) search.Advance(sample);
  if (samples.size() % 2 != 0) search.Advance(samples.back());

  m_packet.assign(1, static_cast<BYTE>(search.StartIndex()));
  for (const std::int8_t reflection : reflections) {
    m_packet.push_back(static_cast<BYTE>(reflection));
  }
  const std::vector<BYTE> codes = search.Codes();
  for (std::size_t i = 0; i < codes.size(); i += 2) {
    m_packet.push_back(static_cast<BYTE>(codes[i] | (codes[i + 1] << 4)));
  }
  return m_packet;
}

}  // namespace zebx::noxcodec
