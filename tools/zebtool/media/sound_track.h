// The sound of a recording, laid along its pictures.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/noxcodec/noxcodec.h"
#include "tools/zebtool/media/sound_file.h"

class CZebFrameData;

namespace zebtool {

// Decodes the speech of frames, in order. Speech that follows on speech is joined without a seam;
// where frames without speech lie between, silence fills up to the frame's moment.
class SoundTrack {
 public:
  // `path` is the WAV file. Throws JobError.
  SoundTrack(const std::string& path, Existing existing, bool rt8port);
  ~SoundTrack();
  SoundTrack(const SoundTrack&) = delete;
  SoundTrack& operator=(const SoundTrack&) = delete;

  // The next frame, `at_ms` after the first one. False when its speech is damaged: it is silent.
  bool Add(const CZebFrameData& frame, ULONGLONG at_ms);
  // Fills up to the end of the last frame and completes the file, which is gone otherwise.
  void Finish(ULONGLONG end_ms);

 private:
  void FillUpTo(ULONGLONG at_ms);

  SpeechWriter m_writer;
  NxcHandle m_decoder = nullptr;
  std::vector<std::int16_t> m_samples;  // of the frame in hand
  bool m_joins = false;                 // the frame before had speech
};

}  // namespace zebtool
