// zebtool salvage: a whole recording out of one whose writer died or whose chain is damaged.
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "recovery/salvage.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/progress.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/output_file.h"
#include "tools/zebtool/recordings/recording_file.h"
#include "tools/zebtool/recordings/written_files.h"

namespace zebtool {
namespace {

using zebx::HeaderRemark;
using zebx::RestoredFrame;
using zebx::SalvageReport;

struct Settings {
  std::string input;
  std::string output;
  bool force = false;
  bool json = false;
};

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

Json JsonOf(const SalvageReport& report) {
  Json json;
  PutFiles(json, FilesOf(report));
  json["saved_frames"] = report.frames;
  json["saved_bytes"] = report.frame_bytes;
  json["lost_frames"] = report.lost_frames;
  json["lost_frame_bytes"] = report.lost_frame_bytes;
  json["restored_frames"] = report.restored_count;
  json["first_restored"] = Json::array();
  for (const RestoredFrame& frame : report.restored) {
    json["first_restored"].push_back({{"offset", frame.offset}, {"what", TextOf(frame.what)}});
  }
  json["holes"] = report.hole_count;
  json["hole_bytes"] = report.hole_bytes;
  json["first_holes"] = Json::array();
  for (const zebx::Hole& hole : report.holes) {
    json["first_holes"].push_back({{"offset", hole.begin}, {"bytes", hole.end - hole.begin}});
  }
  json["header_remarks"] = Json::array();
  for (const HeaderRemark remark : report.header_remarks) {
    json["header_remarks"].push_back(TextOf(remark));
  }
  return json;
}

SalvageReport SaveFrames(const Settings& settings, Console& console) {
  CFile damaged;
  OpenRecording(damaged, settings.input);
  Progress progress(console, "salvage");
  return zebx::SalvageRecording(damaged, settings.output, settings.force,
                                [&](ULONGLONG done, ULONGLONG total) {
                                  progress.ShowPart(done, total);
                                  return true;
                                });
}

int Salvage(const Settings& settings, Console& console) {
  RefuseSameFile(settings.input, settings.output);
  CheckOutput(settings.output, Existing{settings.force});
  const SalvageReport report = SaveFrames(settings, console);
  switch (report.result) {
    case SalvageReport::Result::kNothingToSave:
      throw JobError("no I-frame is intact in " + Plural(report.damaged_bytes, "byte") +
                     ", so there is nothing to save; '" + settings.output + "' was not written");
    case SalvageReport::Result::kExists:
      throw JobError(report.failure + "; --force replaces it");
    case SalvageReport::Result::kNotWritten:
      throw JobError(report.failure + "; the " + Plural(report.frames, "frame") +
                     " before stay there");
    default:
      break;
  }
  if (settings.json) {
    console.out << JsonText(JsonOf(report)) << '\n';
  } else {
    Print(console.out, report);
  }
  return kExitGood;
}

}  // namespace

void AddSalvage(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("salvage", "save every intact frame of a broken recording");
  command.Usage({"FILE OUT.zebz [--force] [--json]"});
  command.Describe(
      "Makes a whole recording out of one whose writer died or which is damaged: every frame that "
      "is intact on disk goes into OUT.zebz, in order, with its time stamp; those of a block that "
      "was never closed included. After damaged bytes it goes on where frames are recognised "
      "again. A frame header in which one bit is damaged is restored, and so is a time stamp that "
      "does not fit those around it. Only frames ahead of the first I-frame are left out, for a "
      "recording has to begin with one. A damaged header is rebuilt as well as it can be. FILE is "
      "never changed.");
  command.Argument("FILE", settings->input);
  command.Argument("OUT.zebz", settings->output);
  command.Flag("--json", settings->json, "the report as JSON");
  AddForceOption(command, settings->force);
  command.Explain(
      "Exit status: 0 when at least one frame was saved, 1 otherwise. A full disk gives 1; what "
      "was written until then stays under its temporary name.");
  command.Does([settings](Console& console) { return Salvage(*settings, console); });
}

}  // namespace zebtool
