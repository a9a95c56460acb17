// zebtool import: real video and sound become a recording.
#include <utility>

#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/camera_input.h"
#include "tools/zebtool/camera_options.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/recording_writer.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

const std::string kHelp =
    "usage: zebtool import VIDEO.y4m|- OUT.zebz [options]\n"
    "\n"
    "Compresses 4:2:0 video of any size, scaled to the frame size, into a recording.\n"
    "\n" +
    std::string(kCameraHelp) +
    "  --host NAME              default: empty\n"
    "  --json                   the report as JSON\n"
    "\n"
    "An input that ends inside a picture, or a full disk, ends the recording there: what was\n"
    "written stays, and the exit status is 1.\n";

void Print(const CameraInput& camera, const std::vector<WrittenFile>& files, bool as_json,
           std::ostream& out) {
  if (!as_json) {
    PrintFiles(out, files);
    camera.PrintReport(out, files);
    return;
  }
  JsonWriter json(out);
  json.BeginObject();
  PutFiles(json, files);
  camera.PutReport(json, files);
  json.EndObject();
}

int RunImport(Arguments arguments, Console& console) {
  const Options options({"import",
                         WithCameraOptions({{"--host"}, {"--json", OptionSpec::Kind::kFlag}}),
                         {"VIDEO.y4m", "OUT.zebz"},
                         2},
                        arguments);
  CameraSettings settings = ReadCameraOptions(options);
  settings.header.SetHostName(options.Text("--host").value_or(""));
  const std::string& output = options.Positionals()[1];
  if (settings.video != kStandardStream) RefuseSameFile(settings.video, output);
  if (settings.audio) RefuseSameFile(*settings.audio, output);

  const CTime begin = settings.begin;
  CameraInput camera(std::move(settings), console);
  const DWORD first_stamp = os::GetTickCount();
  RecordingWriter writer(camera.Header(), output, begin, first_stamp);
  const std::string trouble = camera.Play(writer, first_stamp, 1, "import");
  Print(camera, writer.Files(), options.Has("--json"), console.out);
  if (trouble.empty()) return kExitGood;
  throw JobError(trouble);
}

}  // namespace

const Subcommand kImportCommand = {"import", "compress Y4M video and WAV sound into a recording",
                                   kHelp, RunImport};

}  // namespace zebtool
