// The sound that is played, as a file.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/os/sound/sound_control.h"
#include "tools/zebtool/media/sound_file.h"

namespace zebtool {

// Takes what the devices play for as long as it lives, one at a time. Where the sound stood still
// while a device was open, there is silence of that length; what a device plays follows on what
// the one before it played.
class SoundRecorder final : public os::sound::Sink {
 public:
  // Throws JobError when the file cannot be made.
  SoundRecorder(const std::string& path, Existing existing);
  ~SoundRecorder() override;
  SoundRecorder(const SoundRecorder&) = delete;
  SoundRecorder& operator=(const SoundRecorder&) = delete;

  // In samples from the beginning of the file.
  struct Gap {
    ULONGLONG at;
    ULONGLONG length;
  };
  struct Recorded {
    ULONGLONG samples = 0;
    std::vector<Gap> gaps;
  };
  // Ends the recording and gives the file its name. Throws JobError, also for what failed before.
  Recorded Finish();

 private:
  void Play(const os::sound::Piece& piece) override;
  void Close(HWAVEOUT device) override;
  void Write(const os::sound::Piece& piece);

  std::mutex m_mutex;  // guards what follows
  SpeechWriter m_writer;
  Recorded m_recorded;
  std::optional<ULONGLONG> m_end_ms;  // of the device's last piece
  std::string m_failure;              // why the rest is not written
};

}  // namespace zebtool
