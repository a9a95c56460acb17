// The recordings of one live camera: which files its frames go to, while they come.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"
#include "tools/zebtool/disks/new_recording.h"
#include "tools/zebtool/recordings/written_files.h"

namespace zebtool {

// A finished file of a live camera.
struct LiveFile {
  WrittenFile file;
  RecordingKind kind = RecordingKind::kVideo;
  ULONGLONG pre_alarm_frames = 0;  // of an alarm file, from the pre-alarm buffer
};

// Takes every frame on the device's thread and appends it to the recording, and to an alarm file
// while there is an alarm. Files are made and finished by Work, on the thread of the database:
//
//   alarm files:  none --alarm--> wanted --Work--> filling --Work--> writing --quiet--> none
//
// From the frame with the alarm on, frames are kept until the file has what the camera's pre-alarm
// buffer holds; then follow those of them that the buffer did not have, so that nothing is missing
// or there twice between the two. A next recording is made ahead, and begins with an I-frame.
//
// A lock guards what both threads use. It is held for the writing of one frame at most, and never
// while a file is made or finished.
class CameraRecorder {
 public:
  struct Plan {
    bool records = false;
    bool records_alarms = false;
    DWORD minutes = 0;               // in a file; 0 for as many as fit
    DWORD quiet_ms = kUsualQuietMs;  // an alarm file ends so long after the last alarm
    DWORD longest_bytes = CZebFile::kMaxFileBytes - kRoomForChange;
    // So long after a failure the next file is tried.
    std::chrono::milliseconds retry_after = std::chrono::seconds(5);
  };
  static constexpr DWORD kUsualQuietMs = 5000;
  // From here on a recording is followed by another: as many bytes come while that is made.
  static constexpr DWORD kRoomForChange = 64 << 20;

  // What it needs done, on the thread that calls Work.
  struct Door {
    // Creates a file that begins now; nothing when it has to be tried again later. Throws JobError.
    std::function<std::unique_ptr<CZebFile>(RecordingKind kind)> create;
    // Writes the camera's pre-alarm buffer into the file.
    std::function<void(CZebFile& file)> replay;
    // Asks the camera for an I-frame.
    std::function<void()> request_i_frame;
    // Hears of everything that went wrong, as it happens.
    std::function<void(const std::string& trouble)> report;
  };

  CameraRecorder(Plan plan, Door door) : m_plan(plan), m_door(std::move(door)) {}
  ~CameraRecorder() = default;
  CameraRecorder(const CameraRecorder&) = delete;
  CameraRecorder& operator=(const CameraRecorder&) = delete;

  // On the device's thread. The frame is only read.
  void Take(CZebFrameData& frame, bool is_alarm);

  // The rest is for the thread of Work.
  // Makes files that are wanted, fills them, and finishes those that are done.
  void Work();
  // Lets the recording go on in another file, on a working disk that has changed.
  void ChangeFile() { m_is_change_wanted = true; }
  // Alarms begin no more files.
  void StopAlarms();
  // Finishes everything. The camera has to be closed.
  void Finish();

  struct State {
    std::string file;        // path of the recording in work; empty for none
    std::string alarm_file;  // the same of the alarm file
    ULONGLONG lost = 0;      // frames that should have been recorded and are not
    std::size_t alarms = 0;  // alarm files begun
  };
  State GetState() const;
  // In the order in which they were finished; complete after Finish.
  const std::vector<LiveFile>& Files() const { return m_files; }

 private:
  using SteadyClock = std::chrono::steady_clock;
  enum class AlarmStep { kNone, kWanted, kFilling, kWriting };

  struct OpenFile {
    std::unique_ptr<CZebFile> file;
    RecordingKind kind = RecordingKind::kVideo;
    SteadyClock::time_point begin;
    ULONGLONG pre_alarm_frames = 0;
    bool has_failed = false;
  };
  struct KeptFrame {
    ULONGLONG number;
    std::unique_ptr<CZebFrameData> frame;
  };
  static constexpr std::size_t kMostKept = 750;  // half a minute
  static constexpr std::size_t kRemembered = 8192;

  // With the lock held.
  bool Write(OpenFile& to, CZebFrameData& frame);
  void WriteRecording(CZebFrameData& frame);
  void TakeForAlarm(CZebFrameData& frame, bool is_alarm);
  void Keep(const CZebFrameData& frame);
  void Retire(OpenFile& file);

  std::unique_ptr<CZebFile> Create(RecordingKind kind);
  bool IsNextDue();
  void MakeNext();
  void MakeAlarmFile();
  void FillAlarmFile();
  std::optional<ULONGLONG> LastReplayed(const CZebFile& file) const;
  void FinishRetired();
  void FinishFile(OpenFile& file);

  const Plan m_plan;
  const Door m_door;

  // The thread of Work alone.
  std::vector<LiveFile> m_files;
  SteadyClock::time_point m_next_try;
  bool m_is_refused = false;  // the last try failed, which was reported
  bool m_is_change_wanted = false;
  OpenFile m_filling;  // the alarm file until it is writing

  mutable std::mutex m_mutex;  // guards what follows
  OpenFile m_recording;
  OpenFile m_next;
  OpenFile m_alarm;
  AlarmStep m_step = AlarmStep::kNone;
  bool m_takes_alarms = true;
  DWORD m_last_alarm_stamp = 0;
  std::deque<KeptFrame> m_kept;
  std::vector<DWORD> m_stamps;  // of the last frames: that of frame n is at n % kRemembered
  ULONGLONG m_taken = 0;        // frames so far, which are numbered from 0
  std::vector<OpenFile> m_retired;
  ULONGLONG m_lost = 0;
  std::size_t m_alarms = 0;
  bool m_needs_i_frame = false;
};

}  // namespace zebtool
