// All live cameras of the plan: the library, its boards and cameras, and the loop that keeps them.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "capture/notify.h"
#include "platform/framework/error_report.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/disks/database_session.h"
#include "tools/zebtool/disks/database_use.h"
#include "tools/zebtool/live/live_camera.h"
#include "tools/zebtool/live/live_settings.h"
#include "tools/zebtool/live/live_table.h"
#include "tools/zebtool/screen/window_grid.h"

namespace zebtool {

// One at a time, in the thread that made it; frames come on the device's threads. What goes wrong
// with one camera is said and counted, and the others go on.
class LiveSession {
 public:
  // Opens everything. Throws UsageError for what the plan does not have, and JobError when there is
  // no camera that can be opened.
  LiveSession(const LiveOptions& options, Console& console);
  ~LiveSession();
  LiveSession(const LiveSession&) = delete;
  LiveSession& operator=(const LiveSession&) = delete;

  // Until the time is over or a signal has come.
  void Run();
  // Saves the sheet, closes the cameras and finishes their files.
  void Close();

  std::vector<CameraStatus> Statuses() const;
  const std::vector<std::unique_ptr<LiveCamera>>& Cameras() const { return m_cameras; }
  const std::vector<std::string>& DeletedDays() const { return m_deleted_days; }
  // One for each thing that went wrong.
  const std::vector<std::string>& Troubles() const { return m_troubles; }
  std::string WorkingDisk() const;
  double Seconds() const;

 private:
  using SteadyClock = std::chrono::steady_clock;

  // Puts the plan's devices in force while it lives.
  class DevicePlan {
   public:
    explicit DevicePlan(const LiveOptions& options);
    ~DevicePlan();
    DevicePlan(const DevicePlan&) = delete;
    DevicePlan& operator=(const DevicePlan&) = delete;
  };

  static DWORD Notify(DWORD code, std::uintptr_t user_data, std::uintptr_t first,
                      std::uintptr_t second);

  CameraHost LibraryArguments();
  void OpenBoards();
  void MakeCameras();
  LiveCamera::Settings SettingsOfCamera(const LiveCamera::Identity& who, std::size_t index) const;
  std::unique_ptr<CameraRecorder> MakeRecorder(LiveCamera& camera);
  void OpenCameras();
  void Work();
  void KeepUp();
  void SaveSheet();
  void Report(const std::string& trouble);
  void ReportFromLibrary();

  const LiveOptions& m_options;
  Console& m_console;
  LiveTable m_table;
  std::vector<std::string> m_deleted_days;
  std::vector<std::string> m_troubles;
  bool m_is_short_of_room = false;
  bool m_is_closed = false;
  SteadyClock::time_point m_begin;
  SteadyClock::time_point m_end;
  SteadyClock::time_point m_next_look;

  std::mutex m_mutex;  // guards what follows, told on any thread
  std::vector<std::string> m_told_by_library;

  zebx::ErrorSink m_sink_before;
  DevicePlan m_plan;
  std::optional<DatabaseUse> m_use;
  std::optional<LibrarySession> m_library;
  std::optional<DatabaseSession> m_database;
  std::vector<WORD> m_boards;
  WindowGrid m_grid;
  std::vector<std::unique_ptr<LiveCamera>> m_cameras;
  // By identity as (board, camera); whole before the first camera is opened.
  std::map<std::pair<WORD, WORD>, LiveCamera*> m_by_id;
};

}  // namespace zebtool
