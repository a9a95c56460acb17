// Keeps what the wave-out devices play.
#pragma once

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/os/sound/sound_control.h"

// The sink as long as it lives; its end puts the control of sound back. Any thread may ask.
class RecordedSound final : public os::sound::Sink {
 public:
  struct Heard {
    ULONGLONG m_begin_ms;
    ULONGLONG m_silence_ms;
    std::vector<BYTE> m_bytes;

    bool operator==(const Heard&) const = default;
  };

  RecordedSound() { os::sound::SetSink(this); }
  ~RecordedSound() override { os::sound::ResetControl(); }

  void Play(const os::sound::Piece& piece) override {
    const std::lock_guard lock(m_mutex);
    m_heard.push_back(
        {piece.m_begin_ms, piece.m_silence_ms, {piece.m_bytes.begin(), piece.m_bytes.end()}});
  }
  void Close(HWAVEOUT /*device*/) override { ++m_closed; }

  std::vector<Heard> TakeHeard() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_heard, {});
  }
  // Devices so far.
  DWORD Closed() const { return m_closed; }

 private:
  std::atomic<DWORD> m_closed = 0;
  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<Heard> m_heard;
};
