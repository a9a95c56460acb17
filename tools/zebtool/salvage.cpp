// zebtool salvage: a whole recording out of one whose writer died or whose chain is damaged.
#include <vector>

#include "recovery/salvage.h"
#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/progress.h"
#include "tools/zebtool/recording_file.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"
#include "tools/zebtool/written_files.h"

namespace zebtool {
namespace {

using zebx::HeaderRemark;
using zebx::RestoredFrame;
using zebx::SalvageReport;

constexpr std::string_view kHelp =
    "usage: zebtool salvage FILE OUT.zebz [--force] [--json]\n"
    "\n"
    "Makes a whole recording out of one whose writer died or which is damaged: every frame that "
    "is\n"
    "intact on disk goes into OUT.zebz, in order, with its time stamp; those of a block that was\n"
    "never closed included. After damaged bytes it goes on where frames are recognised again. A\n"
    "frame header in which one bit is damaged is restored, and so is a time stamp that does not "
    "fit\n"
    "those around it. Only frames ahead of the first I-frame are left out, for a recording has to\n"
    "begin with one. A damaged header is rebuilt as well as it can be. FILE is never changed, and\n"
    "OUT.zebz appears when it is whole.\n"
    "\n"
    "  --force  replace OUT.zebz when it exists\n"
    "  --json   the report as JSON\n"
    "\n"
    "Exit status: 0 when at least one frame was saved, 1 otherwise. A full disk gives 1; what was\n"
    "written until then stays under a temporary name.\n";

const char* TextOf(HeaderRemark remark) {
  switch (remark) {
    case HeaderRemark::kDamaged:
      return "the header is damaged";
    case HeaderRemark::kNamesDamaged:
      return "the names of camera, board and host are damaged";
    case HeaderRemark::kFrameSizeReplaced:
      break;
  }
  return "the frame size is damaged; 130 (352 x 288) takes its place";
}

const char* TextOf(RestoredFrame::What what) {
  return what == RestoredFrame::What::kTimeStamp ? "time stamp" : "header";
}

std::vector<WrittenFile> FilesOf(const SalvageReport& report) {
  std::vector<WrittenFile> files;
  for (const auto& file : report.files) {
    files.push_back({file.path, file.frames, file.blocks, file.bytes});
  }
  return files;
}

void PrintLosses(std::ostream& out, const SalvageReport& report) {
  if (report.lost_frames == 0 && report.hole_count == 0) {
    out << "  lost       nothing\n";
    return;
  }
  if (report.lost_frames > 0) {
    out << "  lost       " << Plural(report.lost_frames, "frame") << " ("
        << Plural(report.lost_frame_bytes, "byte") << ") ahead of the first I-frame\n";
  }
  for (const zebx::Hole& hole : report.holes) {
    out << "  lost       " << Plural(hole.end - hole.begin, "byte") << " at "
        << FormatOffset(hole.begin) << '\n';
  }
  if (report.hole_count > report.holes.size()) {
    out << "  lost       " << Plural(report.hole_bytes, "byte") << " in "
        << Plural(report.hole_count, "place") << " in all\n";
  }
}

void Print(std::ostream& out, const SalvageReport& report) {
  PrintFiles(out, FilesOf(report));
  out << "  saved      " << Plural(report.frames, "frame") << ", "
      << Plural(report.frame_bytes, "byte") << '\n';
  for (const HeaderRemark remark : report.header_remarks) {
    out << "  header     " << TextOf(remark) << '\n';
  }
  for (const RestoredFrame& frame : report.restored) {
    out << "  restored   the " << TextOf(frame.what) << " of the frame at "
        << FormatOffset(frame.offset) << '\n';
  }
  if (report.restored_count > report.restored.size()) {
    out << "  restored   " << Plural(report.restored_count, "frame") << " in all\n";
  }
  PrintLosses(out, report);
}

void PrintJson(std::ostream& out, const SalvageReport& report) {
  JsonWriter json(out);
  json.BeginObject();
  PutFiles(json, FilesOf(report));
  json.Value("saved_frames", report.frames);
  json.Value("saved_bytes", report.frame_bytes);
  json.Value("lost_frames", report.lost_frames);
  json.Value("lost_frame_bytes", report.lost_frame_bytes);
  json.Value("restored_frames", report.restored_count);
  json.BeginArray("first_restored");
  for (const RestoredFrame& frame : report.restored) {
    json.BeginObject();
    json.Value("offset", frame.offset);
    json.Value("what", TextOf(frame.what));
    json.EndObject();
  }
  json.EndArray();
  json.Value("holes", report.hole_count);
  json.Value("hole_bytes", report.hole_bytes);
  json.BeginArray("first_holes");
  for (const zebx::Hole& hole : report.holes) {
    json.BeginObject();
    json.Value("offset", hole.begin);
    json.Value("bytes", hole.end - hole.begin);
    json.EndObject();
  }
  json.EndArray();
  json.BeginArray("header_remarks");
  for (const HeaderRemark remark : report.header_remarks) json.Value({}, TextOf(remark));
  json.EndArray();
  json.EndObject();
}

SalvageReport Salvage(const std::string& input, const std::string& output, bool force,
                      Console& console) {
  CFile damaged;
  OpenRecording(damaged, input);
  Progress progress(console, "salvage");
  return zebx::SalvageRecording(damaged, output, force, [&](ULONGLONG done, ULONGLONG total) {
    progress.ShowPart(done, total);
    return true;
  });
}

int RunSalvage(Arguments arguments, Console& console) {
  constexpr auto kFlag = OptionSpec::Kind::kFlag;
  const Options options(
      {"salvage", {{"--force", kFlag}, {"--json", kFlag}}, {"FILE", "OUT.zebz"}, 2}, arguments);
  const std::string& input = options.Positionals()[0];
  const std::string& output = options.Positionals()[1];
  RefuseSameFile(input, output);
  const SalvageReport report = Salvage(input, output, options.Has("--force"), console);
  switch (report.result) {
    case SalvageReport::Result::kNothingToSave:
      throw JobError("no I-frame is intact in " + Plural(report.damaged_bytes, "byte") +
                     ", so there is nothing to save; '" + output + "' was not written");
    case SalvageReport::Result::kExists:
      throw JobError(report.failure + "; --force replaces it");
    case SalvageReport::Result::kNotWritten:
      throw JobError(report.failure + "; the " + Plural(report.frames, "frame") +
                     " before stay there");
    default:
      break;
  }
  if (options.Has("--json")) {
    PrintJson(console.out, report);
  } else {
    Print(console.out, report);
  }
  return kExitGood;
}

}  // namespace

const Subcommand kSalvageCommand = {"salvage", "save every intact frame of a broken recording",
                                    kHelp, RunSalvage};

}  // namespace zebtool
