// zebtool verify: every byte of a recording's structure against what a whole one keeps.
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/recordings/findings.h"

namespace zebtool {
namespace {

struct Settings {
  std::vector<std::string> inputs;
  bool json = false;
};

void Print(std::ostream& out, const std::string& path, const zebx::RecordingCheck& check) {
  const zebx::CheckSummary& summary = check.summary;
  out << path << ": " << StateOf(summary) << ", " << Plural(summary.frames, "frame") << " in "
      << Plural(static_cast<ULONGLONG>(summary.blocks_with_frames), "block") << ", "
      << Plural(summary.file_bytes, "byte") << '\n';
  for (const zebx::Finding& finding : check.findings) out << "  " << FindingLine(finding) << '\n';
  if (check.findings_left_out > 0) {
    out << "  and " << Plural(check.findings_left_out, "more finding") << '\n';
  }
  if (!summary.IsWhole()) out << "  'zebtool salvage' makes a whole recording of what is intact\n";
}

Json ReportOf(const std::string& path, const zebx::RecordingCheck& check) {
  const zebx::CheckSummary& summary = check.summary;
  Json report = {{"file", path},
                 {"state", StateOf(summary)},
                 {"bytes", summary.file_bytes},
                 {"blocks", summary.blocks},
                 {"frames", summary.frames},
                 {"damages", summary.damages},
                 {"notes", summary.notes},
                 {"findings", Json::array()}};
  for (const zebx::Finding& finding : check.findings) {
    report["findings"].push_back(JsonOf(finding));
  }
  return report;
}

int Verify(const Settings& settings, Console& console) {
  Json reports = Json::array();
  int status = kExitGood;
  for (const std::string& path : settings.inputs) {
    try {
      const zebx::RecordingCheck check = zebx::CheckRecording(path);
      if (!check.summary.IsWhole()) status = kExitBad;
      if (settings.json) {
        reports.push_back(ReportOf(path, check));
      } else {
        Print(console.out, path, check);
      }
    } catch (const std::exception& failure) {
      // One file that cannot be read is no reason to leave the others out.
      console.err << "zebtool: " << failure.what() << '\n';
      status = kExitBad;
    }
  }
  if (settings.json) console.out << JsonText(std::move(reports)) << '\n';
  return status;
}

}  // namespace

void AddVerify(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("verify", "check every byte of recordings' structure");
  command.Usage({"FILE... [--json]"});
  command.Describe(
      "Checks header, chain, blocks and frame headers of recordings: magic, lengths, links both "
      "ways, counts, time stamps, the terminating block, an I-frame at every block start, every "
      "frame within its block and no byte left over. Says what is wrong and at which offset.");
  command.Arguments("FILE", settings->inputs);
  command.Flag("--json", settings->json, "the findings as JSON");
  command.Explain(
      "Exit status: 0 when every file is whole, 1 when one is damaged or unfinished. Notes tell of "
      "unusual things that the library itself writes; they are not damage.");
  command.Does([settings](Console& console) { return Verify(*settings, console); });
}

}  // namespace zebtool
