#include "tools/zebtool/disks/store_repair.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "recovery/repair.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/progress.h"
#include "tools/zebtool/console/text.h"

namespace zebtool {
namespace {

using zebx::RepairedRecording;
using zebx::RepairReport;
using Outcome = RepairedRecording::Outcome;

std::string TextOf(const RepairedRecording& recording) {
  switch (recording.outcome) {
    case Outcome::kFinished:
      return "finished: " + Plural(recording.frames, "frame") + ", " +
             FormatCount(recording.frames_gained) + " of them regained" +
             (recording.dropped_bytes > 0
                  ? "; " + Plural(recording.dropped_bytes, "byte") + " of a cut frame are gone"
                  : "");
    case Outcome::kInUse:
      return "left alone: it is open, or may be";
    case Outcome::kEmpty:
      return "left alone: it has no frame yet";
    case Outcome::kDamaged:
      return "left alone: it is damaged; 'zebtool salvage' saves what is intact to a new file";
    case Outcome::kProtected:
      return "left alone: it is write-protected, or a link";
    case Outcome::kLeftOver:
      return "left over from a recovery that was interrupted; it may be deleted";
    case Outcome::kFailed:
      return "not finished: " + recording.failure;
    case Outcome::kWhole:
      break;
  }
  return "whole";
}

std::string SummaryOf(const RepairReport& report) {
  return FormatCount(report.Count(Outcome::kFinished)) + " finished, " +
         FormatCount(report.Count(Outcome::kWhole)) + " whole already, " +
         FormatCount(report.Count(Outcome::kInUse)) + " in use, " +
         FormatCount(report.Count(Outcome::kDamaged)) + " damaged, " +
         FormatCount(report.Count(Outcome::kFailed)) + " failed";
}

void Print(std::ostream& out, const std::string& directory, const RepairReport& report) {
  out << directory << ": " << SummaryOf(report) << '\n';
  for (const RepairedRecording& recording : report.recordings) {
    out << "  " << recording.path << ": " << TextOf(recording) << '\n';
  }
  if (report.recordings_left_out > 0) {
    out << "  and " << Plural(report.recordings_left_out, "more file") << '\n';
  }
  if (report.unread_directories > 0) {
    out << "  directories that cannot be read: " << report.unread_directories << '\n';
  }
}

Json JsonOf(const std::string& directory, const RepairReport& report) {
  Json json = {{"directory", directory}};
  for (std::size_t outcome = 0; outcome < RepairedRecording::kOutcomes; ++outcome) {
    json[NameOf(static_cast<Outcome>(outcome))] = report.counts[outcome];
  }
  json["unread_directories"] = report.unread_directories;
  json["recordings"] = Json::array();
  for (const RepairedRecording& recording : report.recordings) {
    json["recordings"].push_back({{"file", recording.path},
                                  {"outcome", NameOf(recording.outcome)},
                                  {"frames", recording.frames},
                                  {"frames_gained", recording.frames_gained},
                                  {"dropped_bytes", recording.dropped_bytes},
                                  {"text", TextOf(recording)}});
  }
  return json;
}

}  // namespace

int RepairDirectories(const std::vector<std::string>& directories, bool json, Console& console) {
  Json reports = Json::array();
  int status = kExitGood;
  for (const std::string& directory : directories) {
    RepairReport report;
    {
      Progress progress(console, "repair");
      std::uint64_t recordings = 0;
      report = zebx::FinishRecordings(directory, [&](const CString&, ULONGLONG done, ULONGLONG) {
        if (done == 0) progress.Show(++recordings, "recordings");
        return true;
      });
    }
    if (json) {
      reports.push_back(JsonOf(directory, report));
    } else {
      Print(console.out, directory, report);
    }
    if (report.Count(Outcome::kDamaged) + report.Count(Outcome::kFailed) > 0 ||
        report.unread_directories > 0) {
      status = kExitBad;
    }
  }
  if (json) console.out << JsonText(std::move(reports)) << '\n';
  return status;
}

}  // namespace zebtool
