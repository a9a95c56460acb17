#include "tools/zebtool/media/sound_track.h"

#include <algorithm>
#include <array>
#include <span>

#include "record/zeb_frame_data.h"
#include "tools/zebtool/console/console.h"

namespace zebtool {
namespace {

constexpr DWORD kSamplesPerMs = kSpeechRate / 1000;
// Speech further behind its picture than this is moved, seam or not.
constexpr ULONGLONG kMostLateSamples = 200 * kSamplesPerMs;
// No frame lasts longer; a decoder that promises more is not to be believed.
constexpr DWORD kMostSamples = 120 * kSpeechRate;

}  // namespace

SoundTrack::SoundTrack(const std::string& path, Existing existing, bool rt8port)
    : m_writer(path, existing) {
  if (nxcCreateAudioDecoder(&m_decoder, rt8port ? 1 : 0) != 0) {
    throw JobError("the codec has no decoder for this recording's sound");
  }
}

SoundTrack::~SoundTrack() {
  nxcDestroyHandle(m_decoder);
}

bool SoundTrack::Add(const CZebFrameData& frame, ULONGLONG at_ms) {
  if (frame.IsVoice() == 0 || frame.GetSpeechLength() == 0) {
    m_joins = false;
    return true;
  }
  DWORD samples = 0;
  const BYTE* const speech = frame.GetSpeechBuf();
  const DWORD bytes = frame.GetSpeechLength();
  const bool counted = nxcDecodeAudio(m_decoder, speech, bytes, nullptr, &samples) == 0;
  if (!counted || samples > kMostSamples) {
    m_joins = false;
    return false;
  }
  m_samples.resize(samples);
  if (nxcDecodeAudio(m_decoder, speech, bytes, m_samples.data(), &samples) != 0) {
    m_joins = false;
    return false;
  }
  if (!m_joins || m_writer.Samples() + kMostLateSamples < at_ms * kSamplesPerMs) FillUpTo(at_ms);
  m_writer.Write(m_samples);
  m_joins = true;
  return true;
}

void SoundTrack::FillUpTo(ULONGLONG at_ms) {
  constexpr std::array<std::int16_t, 4096> kSilence{};
  const ULONGLONG wanted = at_ms * kSamplesPerMs;
  while (m_writer.Samples() < wanted) {
    const auto count = std::min<ULONGLONG>(wanted - m_writer.Samples(), kSilence.size());
    m_writer.Write(std::span(kSilence).first(static_cast<std::size_t>(count)));
  }
}

void SoundTrack::Finish(ULONGLONG end_ms) {
  FillUpTo(end_ms);
  m_writer.Finish();
}

}  // namespace zebtool
