// zebtool record: a video becomes the recordings of a camera, on the disks of a database.
#include <utility>

#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/camera_input.h"
#include "tools/zebtool/camera_options.h"
#include "tools/zebtool/database_session.h"
#include "tools/zebtool/disk_place.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

const std::string kHelp =
    "usage: zebtool record VIDEO.y4m|- --db FILE [options]\n"
    "\n"
    "Compresses 4:2:0 video as 'import' does, into recordings on the working disk of a database.\n"
    "The clock runs with the video from --begin on, so that days pass as recorded. Every few "
    "seconds\n"
    "of recorded time, and before every file, the working disk's space is looked at; when it is\n"
    "below the reserved space another disk is chosen, or the oldest days of the disks that "
    "recycle\n"
    "are deleted and named.\n"
    "\n"
    "  --minutes N         a new file every N minutes of recorded time, 1 to 1440\n"
    "  --alarm             alarm recordings\n"
    "  --loops N           the video N times over, 1 to 1000000; not from a pipe\n" +
    std::string(kDatabaseHelp) + std::string(kCameraHelp) +
    "  --json                   the report as JSON\n"
    "\n"
    "When no disk has room and nothing can be recycled, recording ends: what was written stays, "
    "and\n"
    "the exit status is 1.\n";

constexpr DWORD kMaxMinutes = 1440;
constexpr DWORD kMaxLoops = 1000000;

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

void PrintJson(const Outcome& outcome, std::ostream& out) {
  JsonWriter json(out);
  json.BeginObject();
  PutFiles(json, outcome.files);
  json.BeginArray("deleted_days");
  for (const std::string& day : outcome.deleted_days) json.Value({}, day);
  json.EndArray();
  json.Value("working_disk", outcome.working_disk);
  outcome.camera.PutReport(json, outcome.files);
  json.EndObject();
}

int RunRecord(Arguments arguments, Console& console) {
  constexpr auto kFlag = OptionSpec::Kind::kFlag;
  const Options options({"record",
                         WithDatabaseOptions(WithCameraOptions(
                             {{"--minutes"}, {"--loops"}, {"--alarm", kFlag}, {"--json", kFlag}})),
                         {"VIDEO.y4m"},
                         1},
                        arguments);
  CameraSettings settings = ReadCameraOptions(options);
  const DiskPlace::Plan plan{options.Has("--alarm"),
                             options.Number("--minutes", 1, kMaxMinutes).value_or(0)};
  const DWORD loops = options.Number("--loops", 1, kMaxLoops).value_or(1);
  if (loops > 1 && settings.video == kStandardStream) {
    options.Fail("--loops needs a file, not a pipe");
  }
  const DatabaseOptions database_options = ReadDatabaseOptions(options);
  settings.header.SetHostName(database_options.host);
  const bool as_json = options.Has("--json");

  const CTime begin = settings.begin;
  CameraInput camera(std::move(settings), console);
  std::vector<std::string> deleted_days;
  DatabaseSession database(database_options, DatabaseSession::Start::kExisting, [&](CTime day) {
    deleted_days.push_back(FormatDay(day));
    if (!as_json) console.out << "deleted " << deleted_days.back() << std::endl;
  });
  const DWORD first_stamp = os::GetTickCount();
  RecordingWriter writer(camera.Header(), std::make_unique<DiskPlace>(database, plan), begin,
                         first_stamp);
  const std::string trouble = camera.Play(writer, first_stamp, loops, "record");
  const Outcome outcome{camera, writer.Files(), deleted_days, database.WorkingDisk()};
  if (as_json) {
    PrintJson(outcome, console.out);
  } else {
    Print(outcome, console.out);
  }
  if (!trouble.empty()) throw JobError(trouble);
  database.Save();
  return kExitGood;
}

}  // namespace

const Subcommand kRecordCommand = {"record", "record Y4M video onto the disks of a database", kHelp,
                                   RunRecord};

}  // namespace zebtool
