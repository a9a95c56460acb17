// zebtool verify: every byte of a recording's structure against what a whole one keeps.
#include <optional>

#include "tools/zebtool/findings.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

constexpr std::string_view kHelp =
    "usage: zebtool verify FILE... [--json]\n"
    "\n"
    "Checks header, chain, blocks and frame headers of recordings: magic, lengths, links both\n"
    "ways, counts, time stamps, the terminating block, an I-frame at every block start, every\n"
    "frame within its block and no byte left over. Says what is wrong and at which offset.\n"
    "\n"
    "  --json   the findings as JSON\n"
    "\n"
    "Exit status: 0 when every file is whole, 1 when one is damaged or unfinished. Notes tell of\n"
    "unusual things that the library itself writes; they are not damage.\n";

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

void Put(JsonWriter& json, const std::string& path, const zebx::RecordingCheck& check) {
  const zebx::CheckSummary& summary = check.summary;
  json.BeginObject();
  json.Value("file", path);
  json.Value("state", StateOf(summary));
  json.Value("bytes", summary.file_bytes);
  json.Value("blocks", summary.blocks);
  json.Value("frames", summary.frames);
  json.Value("damages", summary.damages);
  json.Value("notes", summary.notes);
  json.BeginArray("findings");
  for (const zebx::Finding& finding : check.findings) PutFinding(json, finding);
  json.EndArray();
  json.EndObject();
}

int RunVerify(Arguments arguments, Console& console) {
  const Options options({"verify", {{"--json", OptionSpec::Kind::kFlag}}, {"FILE"}, 1, true},
                        arguments);
  std::optional<JsonWriter> json;
  if (options.Has("--json")) json.emplace(console.out);
  if (json) json->BeginArray();
  int status = kExitGood;
  for (const std::string& path : options.Positionals()) {
    try {
      const zebx::RecordingCheck check = zebx::CheckRecording(path);
      if (!check.summary.IsWhole()) status = kExitBad;
      if (json) {
        Put(*json, path, check);
      } else {
        Print(console.out, path, check);
      }
    } catch (const std::exception& failure) {
      // One file that cannot be read is no reason to leave the others out.
      console.err << "zebtool: " << failure.what() << '\n';
      status = kExitBad;
    }
  }
  if (json) json->EndArray();
  return status;
}

}  // namespace

const Subcommand kVerifyCommand = {"verify", "check every byte of recordings' structure", kHelp,
                                   RunVerify};

}  // namespace zebtool
