#include "platform/noxcodec/software/speech_format.h"

#include <algorithm>

namespace zebx::noxcodec {
namespace {

constexpr int kWeightBits = 12;
constexpr int kReflectionBits = 7;
constexpr int kSignBit = 8;
constexpr int kMagnitudeMask = 7;

constexpr std::array<int, kSpeechSteps> kSteps = [] {
  std::array<int, kSpeechSteps> steps{};
  int step_by_128 = 7 << 7;
  for (int& step : steps) {
    step = step_by_128 >> 7;
    step_by_128 += step_by_128 / 10;
  }
  return steps;
}();

// Small codes let the step shrink, large ones make it grow.
constexpr std::array<int, kMagnitudeMask + 1> kStepChanges = {-1, -1, -1, -1, 2, 4, 6, 8};

std::int16_t ToSample(std::int64_t value) {
  return static_cast<std::int16_t>(std::clamp<std::int64_t>(value, INT16_MIN, INT16_MAX));
}

}  // namespace

SpeechPredictor::SpeechPredictor(const SpeechReflections& reflections) {
  for (std::size_t order = 0; order < reflections.size(); ++order) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): a number and no character
    const int reflection = reflections[order];
    const auto before = m_weights;
    m_weights[order] = reflection * (1 << (kWeightBits - kReflectionBits));
    for (std::size_t i = 0; i < order; ++i) {
      m_weights[i] -= (reflection * before[order - 1 - i]) >> kReflectionBits;
    }
  }
}

int SpeechPredictor::Predict(const std::array<std::int16_t, kSpeechOrder>& history) const {
  std::int64_t sum = 1 << (kWeightBits - 1);
  for (std::size_t i = 0; i < history.size(); ++i) sum += std::int64_t{m_weights[i]} * history[i];
  return ToSample(sum >> kWeightBits);
}

int SpeechStep(int step_index) {
  return kSteps[static_cast<std::size_t>(step_index)];
}

void SpeechState::Advance(int predicted, int code) {
  const int magnitude = code & kMagnitudeMask;
  const int difference = (2 * magnitude + 1) * SpeechStep(m_step_index) / 8;
  std::copy_backward(m_history.begin(), m_history.end() - 1, m_history.end());
  m_history[0] = ToSample((code & kSignBit) != 0 ? predicted - difference : predicted + difference);
  m_step_index = std::clamp(m_step_index + kStepChanges[static_cast<std::size_t>(magnitude)], 0,
                            kSpeechSteps - 1);
}

}  // namespace zebx::noxcodec
