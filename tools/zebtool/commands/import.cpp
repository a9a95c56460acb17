// zebtool import: real video and sound become a recording.
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "platform/os/clock.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/input_stream.h"
#include "tools/zebtool/recordings/camera_input.h"
#include "tools/zebtool/recordings/recording_writer.h"

using namespace zebx;

namespace zebtool {
namespace {

struct Settings {
  CameraOptions camera;
  std::string output;
  std::string host;
  bool force = false;
  bool json = false;
};

void Report(const CameraInput& camera, const std::vector<WrittenFile>& files, bool as_json,
            std::ostream& out) {
  if (!as_json) {
    PrintFiles(out, files);
    camera.PrintReport(out, files);
    return;
  }
  Json report;
  PutFiles(report, files);
  camera.PutReport(report, files);
  out << JsonText(std::move(report)) << '\n';
}

int Import(const Settings& settings, Console& console) {
  const CameraOptions& options = settings.camera;
  if (options.video != kStandardStream) RefuseSameFile(options.video, settings.output);
  if (options.audio) RefuseSameFile(*options.audio, settings.output);

  CameraSettings camera_settings = SettingsOf(options, settings.host);
  const CTime begin = camera_settings.begin;
  CameraInput camera(std::move(camera_settings), console);
  const DWORD first_stamp = os::GetTickCount();
  RecordingWriter writer(camera.Header(), settings.output, Existing{settings.force}, begin,
                         first_stamp);
  const std::string trouble = camera.Play(writer, first_stamp, 1, "import");
  Report(camera, writer.Files(), settings.json, console.out);
  if (!trouble.empty()) throw JobError(trouble);
  return kExitGood;
}

}  // namespace

void AddImport(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command =
      root.Sub("import", "compress Y4M video and a sound file into a recording");
  command.Usage({"VIDEO.y4m|- OUT.zebz [options]"});
  command.Describe(
      "Compresses 4:2:0 video of any size, scaled to the frame size, into a recording.");
  AddCameraOptions(command, settings->camera);
  command.Option("--host", "NAME", settings->host, "default: empty");
  command.Argument("OUT.zebz", settings->output);
  command.Heading("output");
  command.Flag("--json", settings->json, "the report as JSON");
  AddForceOption(command, settings->force);
  command.Explain(
      "An input that ends inside a picture ends the recording there: what was written stays, and "
      "the exit status is 1. After a full disk the frames before it stay as OUT.part.zebz, which "
      "'zebtool salvage' makes whole.");
  command.Does([settings](Console& console) { return Import(*settings, console); });
}

}  // namespace zebtool
