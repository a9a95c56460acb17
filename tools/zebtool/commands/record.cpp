// zebtool record: a video becomes the recordings of a camera, on the disks of a database.
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "platform/os/clock.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/disks/database_session.h"
#include "tools/zebtool/disks/disk_place.h"
#include "tools/zebtool/files/input_stream.h"
#include "tools/zebtool/recordings/camera_input.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr Bounds kMinutes = {1, 1440};
constexpr Bounds kLoops = {1, 1000000};

struct Settings {
  CameraOptions camera;
  DatabaseOptions database;
  std::optional<DWORD> minutes;
  std::optional<DWORD> loops;
  bool alarm = false;
  bool json = false;
};

struct Outcome {
  const CameraInput& camera;
  const std::vector<WrittenFile>& files;
  const std::vector<std::string>& deleted_days;
  std::string working_disk;
};

void Print(const Outcome& outcome, std::ostream& out) {
  PrintFiles(out, outcome.files);
  outcome.camera.PrintReport(out, outcome.files);
  out << "  deleted    " << Plural(outcome.deleted_days.size(), "day") << '\n'
      << "  disk       " << (outcome.working_disk.empty() ? "none" : outcome.working_disk) << '\n';
}

Json JsonOf(const Outcome& outcome) {
  Json report;
  PutFiles(report, outcome.files);
  report["deleted_days"] = outcome.deleted_days;
  report["working_disk"] = outcome.working_disk;
  outcome.camera.PutReport(report, outcome.files);
  return report;
}

int Record(const Settings& settings, Console& console) {
  const DWORD loops = settings.loops.value_or(1);
  if (loops > 1 && settings.camera.video == kStandardStream) {
    throw UsageError("--loops needs a file, not a pipe");
  }
  CameraSettings camera_settings = SettingsOf(settings.camera, settings.database.host);
  const CTime begin = camera_settings.begin;
  CameraInput camera(std::move(camera_settings), console);
  std::vector<std::string> deleted_days;
  DatabaseSession database(settings.database, DatabaseSession::Start::kExisting, [&](CTime day) {
    deleted_days.push_back(FormatDay(day));
    if (!settings.json) console.out << "deleted " << deleted_days.back() << std::endl;
  });
  const DWORD first_stamp = os::GetTickCount();
  const DiskPlace::Plan plan{settings.alarm, settings.minutes.value_or(0)};
  RecordingWriter writer(camera.Header(), std::make_unique<DiskPlace>(database, plan), begin,
                         first_stamp);
  const std::string trouble = camera.Play(writer, first_stamp, loops, "record");
  const Outcome outcome{camera, writer.Files(), deleted_days, database.WorkingDisk()};
  if (settings.json) {
    console.out << JsonText(JsonOf(outcome)) << '\n';
  } else {
    Print(outcome, console.out);
  }
  if (!trouble.empty()) throw JobError(trouble);
  database.Save();
  return kExitGood;
}

}  // namespace

void AddRecord(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("record", "record Y4M video onto the disks of a database");
  command.Usage({"VIDEO.y4m|- --db FILE [options]"});
  command.Describe(
      "Compresses 4:2:0 video as 'import' does, into recordings on the working disk of a database. "
      "The clock runs with the video from --begin on, so that days pass as recorded. Every few "
      "seconds of recorded time, and before every file, the working disk's space is looked at; "
      "when it is below the reserved space another disk is chosen, or the oldest days of the disks "
      "that recycle are deleted and named.");
  command.Option("--minutes", "N", settings->minutes, kMinutes,
                 "a new file every N minutes of recorded time, 1 to 1440");
  command.Flag("--alarm", settings->alarm, "alarm recordings");
  command.Option("--loops", "N", settings->loops, kLoops,
                 "the video N times over, 1 to 1000000; not from a pipe");
  command.Flag("--json", settings->json, "the report as JSON");
  AddDatabaseOptions(command, settings->database);
  AddCameraOptions(command, settings->camera);
  command.Explain(
      "When no disk has room and nothing can be recycled, recording ends: what was written stays, "
      "and the exit status is 1.");
  command.Does([settings](Console& console) { return Record(*settings, console); });
}

}  // namespace zebtool
