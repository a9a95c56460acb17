#include "tools/zebtool/play/sound_recorder.h"

#include <algorithm>
#include <cstring>

namespace zebtool {
namespace {

constexpr ULONGLONG kMsPerSecond = 1000;
constexpr ULONGLONG kRoundingMs = 1;  // of a piece that is no whole number of milliseconds

}  // namespace

SoundRecorder::SoundRecorder(const std::string& path, Existing existing)
    : m_writer(path, existing) {
  os::sound::SetSink(this);
}

SoundRecorder::~SoundRecorder() {
  os::sound::SetSink(nullptr);
}

void SoundRecorder::Play(const os::sound::Piece& piece) {
  const std::lock_guard lock(m_mutex);
  if (!m_failure.empty()) return;
  try {
    Write(piece);
  } catch (const JobError& error) {
    m_failure = error.what();
  }
}

void SoundRecorder::Write(const os::sound::Piece& piece) {
  constexpr ULONGLONG kSamplesPerMs = kSpeechRate / kMsPerSecond;
  const ULONGLONG gap_ms =
      piece.m_begin_ms - std::min(piece.m_begin_ms, m_end_ms.value_or(piece.m_begin_ms));
  if (gap_ms > kRoundingMs) {
    m_recorded.gaps.push_back({m_writer.Samples(), gap_ms * kSamplesPerMs});
    m_writer.Write(std::vector<std::int16_t>(gap_ms * kSamplesPerMs));
  }
  std::vector<std::int16_t> samples(piece.m_bytes.size() / sizeof(std::int16_t));
  std::memcpy(samples.data(), piece.m_bytes.data(), samples.size() * sizeof(std::int16_t));
  m_writer.Write(samples);
  m_end_ms = piece.m_begin_ms + samples.size() / kSamplesPerMs;
}

void SoundRecorder::Close(HWAVEOUT) {
  const std::lock_guard lock(m_mutex);
  m_end_ms.reset();
}

SoundRecorder::Recorded SoundRecorder::Finish() {
  os::sound::SetSink(nullptr);
  const std::lock_guard lock(m_mutex);
  if (!m_failure.empty()) throw JobError(m_failure);
  m_writer.Finish();
  m_recorded.samples = m_writer.Samples();
  return std::move(m_recorded);
}

}  // namespace zebtool
