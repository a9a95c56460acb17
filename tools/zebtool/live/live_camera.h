// One live camera of the tool: its window, masks and settings, what comes of it, and its recorder.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "capture/encode_param.h"
#include "capture/mask_list.h"
#include "capture/show_param.h"
#include "platform/framework/geometry.h"
#include "record/zeb_file_info.h"
#include "tools/zebtool/live/camera_recorder.h"

class CVideoData;

namespace zebtool {

// Made, opened and closed by one thread; frames come on the device's, between Open and Close.
class LiveCamera {
 public:
  struct Identity {
    tag_ZEBCAMERAID id;
    DWORD number = 0;  // from 1 over all boards
    std::string name;
    BYTE board_type = 0;
  };
  struct Settings {
    tag_FRAMESIZE frame_size = {};
    std::string board_name;
    std::string host_name;
    CEncodeParam encoder;
    std::vector<CRect> masks;  // in percent
    CRect window;
  };

  LiveCamera(Identity identity, const Settings& settings);
  // The camera has to be closed.
  ~LiveCamera();
  LiveCamera(const LiveCamera&) = delete;
  LiveCamera& operator=(const LiveCamera&) = delete;

  // Before the first Open. Cameras without a recorder are only shown.
  void SetRecorder(std::unique_ptr<CameraRecorder> recorder) { m_recorder = std::move(recorder); }
  // Null without one.
  CameraRecorder* Recorder() const { return m_recorder.get(); }

  // 1, or 0 when the device refuses it.
  int Open();
  void Close();
  bool IsOpen() const;
  void RequestIFrame();
  // Shows in the captions what the recorder does.
  void ShowState();

  // A header for its recordings, without times.
  CZebFileInfo MakeHeader() const;

  // On the device's thread, for each live frame.
  void TakeFrame(CVideoData& frame);
  void CountFaces(DWORD faces);

  const Identity& Who() const { return m_identity; }
  HWND Window() const { return m_window; }

  struct Figures {
    ULONGLONG frames = 0;
    ULONGLONG i_frames = 0;
    ULONGLONG voiced_frames = 0;
    ULONGLONG bytes = 0;  // of video and speech
    ULONGLONG motion_frames = 0;
    ULONGLONG alarm_frames = 0;
    ULONGLONG lost_pictures = 0;  // frames without a signal
    ULONGLONG faces = 0;
    std::string frame_rate;      // as the library tells it
    double kbit_per_second = 0;  // of the last whole second
    // As of the last frame.
    bool sees_motion = false;
    bool is_in_alarm = false;
    bool is_video_lost = false;
  };
  Figures GetFigures() const;

 private:
  const Identity m_identity;
  const tag_FRAMESIZE m_frame_size;
  CEncodeParam m_encoder;
  CMaskList m_masks;
  CShowParam m_show;
  HWND m_window = nullptr;
  std::unique_ptr<CameraRecorder> m_recorder;

  void CountBytes(const CVideoData& frame);

  mutable std::mutex m_mutex;  // guards what follows
  Figures m_figures;
  DWORD m_second_begin_stamp = 0;
  ULONGLONG m_bytes_before_second = 0;
};

}  // namespace zebtool
