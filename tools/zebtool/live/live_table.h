// What people see of live cameras: a table that refreshes itself, or lines.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tools/zebtool/console/console.h"
#include "tools/zebtool/live/camera_recorder.h"
#include "tools/zebtool/live/live_camera.h"

namespace zebtool {

// A camera as of one moment.
struct CameraStatus {
  LiveCamera::Identity who;
  LiveCamera::Figures figures;
  CameraRecorder::State recorder;
};

// On a terminal one table on the error stream, drawn anew where it stands and wiped at the end;
// elsewhere one line a second of the output at most.
class LiveTable {
 public:
  explicit LiveTable(Console& console) : m_console(console) {}
  ~LiveTable();
  LiveTable(const LiveTable&) = delete;
  LiveTable& operator=(const LiveTable&) = delete;

  using Duration = std::chrono::steady_clock::duration;
  // True when Show would show something: the caller asks before it gathers the statuses.
  bool IsDue(Duration elapsed) const { return elapsed >= m_next; }
  void Show(Duration elapsed, const std::vector<CameraStatus>& cameras);
  // Makes room for a line of somebody else on the error stream.
  void Wipe();

 private:
  Console& m_console;
  Duration m_next{};
  std::size_t m_lines = 0;  // of the table that stands there
};

// The table's lines, for the end of a report too.
std::vector<std::string> TableOf(const std::vector<CameraStatus>& cameras);

}  // namespace zebtool
