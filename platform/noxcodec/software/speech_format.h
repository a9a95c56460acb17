// The form of speech packets and the arithmetic that turns their codes into samples, the same in
// the encoder and in the decoder.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/framework/types.h"

namespace zebx::noxcodec {

inline constexpr int kSpeechOrder = 10;
inline constexpr int kSpeechSteps = 89;

// A packet is the first step's index (a byte), the predictor's reflection coefficients (a signed
// byte each, in 1/128), then a byte for every two samples: the code of the earlier one in the low
// four bits.
inline constexpr std::size_t kSpeechHeaderBytes = 1 + kSpeechOrder;

using SpeechReflections = std::array<std::int8_t, kSpeechOrder>;

// Predicts each sample from the kSpeechOrder samples before it.
class SpeechPredictor {
 public:
  explicit SpeechPredictor(const SpeechReflections& reflections);

  // `history` has the latest sample first.
  int Predict(const std::array<std::int16_t, kSpeechOrder>& history) const;

 private:
  std::array<std::int32_t, kSpeechOrder> m_weights{};
};

// The step that a code counts in, of kSpeechSteps that grow by a tenth from one to the next.
int SpeechStep(int step_index);

// What a code means depends on the samples and codes before it in the packet. Before the first one
// is silence.
class SpeechState {
 public:
  explicit SpeechState(int step_index) : m_step_index(step_index) {}

  int StepIndex() const { return m_step_index; }
  std::int16_t LastSample() const { return m_history[0]; }
  int Predict(const SpeechPredictor& predictor) const { return predictor.Predict(m_history); }

  // Takes a code of four bits: a sign (8) over three bits of magnitude. `predicted` is Predict's.
  void Advance(int predicted, int code);

  bool operator==(const SpeechState&) const = default;

 private:
  std::array<std::int16_t, kSpeechOrder> m_history{};
  int m_step_index;
};

}  // namespace zebx::noxcodec
