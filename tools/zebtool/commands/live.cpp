// zebtool live: cameras in windows, their frames recorded, alarms with the seconds before them.
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/stop_signals.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/output_file.h"
#include "tools/zebtool/live/live_session.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr double kBitsPerByte = 8;
constexpr double kThousand = 1000;
constexpr double kShortestSeconds = 1e-3;

Json FilesOf(const LiveCamera& camera) {
  Json files = Json::array();
  if (camera.Recorder() == nullptr) return files;
  for (const LiveFile& file : camera.Recorder()->Files()) {
    files.push_back({{"path", file.file.path},
                     {"kind", file.kind == RecordingKind::kAlarm ? "alarm" : "video"},
                     {"frames", file.file.frames},
                     {"pre_alarm_frames", file.pre_alarm_frames},
                     {"blocks", file.file.blocks},
                     {"bytes", file.file.bytes}});
  }
  return files;
}

Json CameraJson(const CameraStatus& status, const LiveCamera& camera, double seconds) {
  const LiveCamera::Figures& figures = status.figures;
  Json json;
  json["number"] = status.who.number;
  json["board"] = status.who.id.m_board;
  json["camera"] = status.who.id.m_camera;
  json["name"] = status.who.name;
  json["board_type"] = status.who.board_type;
  json["frames"] = figures.frames;
  json["i_frames"] = figures.i_frames;
  json["voiced_frames"] = figures.voiced_frames;
  json["bytes"] = figures.bytes;
  json["frames_per_second"] = Rounded(static_cast<double>(figures.frames) / seconds);
  json["kbit_per_second"] =
      Rounded(static_cast<double>(figures.bytes) * kBitsPerByte / kThousand / seconds);
  json["motion_frames"] = figures.motion_frames;
  json["alarm_frames"] = figures.alarm_frames;
  json["alarms"] = status.recorder.alarms;
  json["frames_without_video"] = figures.lost_pictures;
  json["faces"] = figures.faces;
  json["frames_not_recorded"] = status.recorder.lost;
  json["files"] = FilesOf(camera);
  return json;
}

Json JsonOf(const LiveSession& session, const LiveOptions& options) {
  Json report;
  report["seconds"] = Rounded(session.Seconds());
  report["cameras"] = Json::array();
  const double seconds = std::max(session.Seconds(), kShortestSeconds);
  const std::vector<CameraStatus> statuses = session.Statuses();
  for (std::size_t index = 0; index < statuses.size(); ++index) {
    report["cameras"].push_back(CameraJson(statuses[index], *session.Cameras()[index], seconds));
  }
  report["deleted_days"] = session.DeletedDays();
  report["working_disk"] = session.WorkingDisk();
  report["sheet"] = options.sheet.value_or("");
  report["troubles"] = session.Troubles();
  return report;
}

void Print(const LiveSession& session, const LiveOptions& options, std::ostream& out) {
  for (const std::string& line : TableOf(session.Statuses())) out << line << '\n';
  for (const auto& camera : session.Cameras()) {
    if (camera->Recorder() == nullptr) continue;
    for (const LiveFile& file : camera->Recorder()->Files()) {
      PrintFiles(out, {&file.file, 1});
      if (file.kind == RecordingKind::kAlarm) {
        out << "  alarm      " << Plural(file.pre_alarm_frames, "frame")
            << " of them from the pre-alarm buffer\n";
      }
    }
  }
  if (options.sheet) out << *options.sheet << ": the windows\n";
}

int Live(const LiveOptions& options, Console& console) {
  CheckOptions(options);
  if (options.sheet) {
    CheckOutput(*options.sheet, options.replaces_sheet ? Existing::kReplace : Existing::kRefuse);
  }
  const StopSignals signals;
  LiveSession session(options, console);
  session.Run();
  session.Close();
  if (options.json) {
    console.out << JsonText(JsonOf(session, options)) << '\n';
  } else {
    Print(session, options, console.out);
  }
  return session.Troubles().empty() ? kExitGood : kExitBad;
}

}  // namespace

void AddLive(const Command& root) {
  const auto options = std::make_shared<LiveOptions>();
  const Command command = root.Sub("live", "show live cameras, record them and their alarms");
  command.Usage({"[--devices PLAN] [options]", "--record --db FILE [--alarm-on-motion] [options]"});
  command.Describe(
      "Opens every camera of the devices in a window of its own and tells what comes of each: on a "
      "terminal as a table that refreshes itself, elsewhere as a line a second. With a database it "
      "records, each camera into files of its own, until the time is over or Ctrl-C ends it; "
      "either way every file is finished.");
  AddLiveOptions(command, *options);
  command.Explain(
      "A camera that cannot be opened or recorded is named, and the others go on; the exit status "
      "is 1 then.");
  command.Does([options](Console& console) { return Live(*options, console); });
}

}  // namespace zebtool
