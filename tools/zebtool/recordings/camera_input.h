// A video file with its sound, played as a camera would deliver it: compressed frames with stamps.
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/noxcodec/software/video_encoder.h"
#include "record/zeb_frame_data.h"
#include "tools/zebtool/media/frame_rate.h"
#include "tools/zebtool/media/y4m.h"
#include "tools/zebtool/recordings/camera_options.h"
#include "tools/zebtool/recordings/recording_writer.h"

namespace zebtool {

class Progress;

// What was compressed so far.
struct CameraReport {
  ULONGLONG frames = 0;
  ULONGLONG i_frames = 0;
  ULONGLONG voiced_frames = 0;
  ULONGLONG raw_bytes = 0;
  double seconds = 0;  // of work
};

class CameraInput {
 public:
  // Opens the inputs and chooses the frame size. Throws JobError.
  CameraInput(CameraSettings settings, Console& console);
  ~CameraInput();
  CameraInput(const CameraInput&) = delete;
  CameraInput& operator=(const CameraInput&) = delete;

  // What a recording of this camera has as its header.
  const CZebFileInfo& Header() const { return m_settings.header; }

  // Appends every frame to the writer, the first one stamped `first_stamp`, and finishes it; the
  // video is played `loops` times, stamps going on. `label` is shown with the progress. What ends
  // it early is returned as a text, empty when nothing did: the frames before it are kept. Throws
  // JobError when there are none and when a file cannot be finished.
  std::string Play(RecordingWriter& writer, DWORD first_stamp, DWORD loops,
                   const std::string& label);

  const CameraReport& Report() const { return m_report; }
  // The lines, and the JSON values, about pictures, ratio and speed.
  void PrintReport(std::ostream& out, const std::vector<WrittenFile>& files) const;
  void PutReport(Json& json, const std::vector<WrittenFile>& files) const;

 private:
  class Sound;

  void OpenInputs();
  void ChooseSizes();
  void PlayOnce(RecordingWriter& writer, DWORD first_stamp, Progress& progress);
  void Count();
  double Ratio(const std::vector<WrittenFile>& files) const;
  double FramesPerSecond() const;

  CameraSettings m_settings;
  Console& m_console;
  std::unique_ptr<InputStream> m_input;
  std::unique_ptr<Y4mReader> m_video;
  std::unique_ptr<Sound> m_sound;  // null without sound
  std::unique_ptr<zebx::noxcodec::VideoEncoder> m_encoder;
  FrameRate m_rate;
  CZebFrameData m_frame;
  CameraReport m_report;
};

}  // namespace zebtool
