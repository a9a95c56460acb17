// zebtool info: what a recording holds, as text or as JSON.
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "capture/picture_formats.h"
#include "platform/framework/file.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/media/picture_sizes.h"
#include "tools/zebtool/recordings/findings.h"
#include "tools/zebtool/recordings/recording_file.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr double kMsPerSecond = 1000;
constexpr std::size_t kMostFindings = 100;

struct Settings {
  std::string input;
  bool blocks = false;
  bool frames = false;
  bool json = false;
};

const char* StandardOf(const CZebFileInfo& info) {
  const DWORD standard = zebxGetVideoStd(info.GetFrameSize());
  if (standard == kNoVideoStandard) return "unknown";
  return standard == kVideoStandardPal ? "PAL" : "NTSC";
}

// Tells the facts as they are met, so that nothing but a few findings is kept.
class Reporter : public zebx::CheckVisitor {
 public:
  virtual void Finish(const zebx::CheckSummary& summary) = 0;

  void OnHeader(const CZebFileInfo& info) override { m_info = info; }
  void OnFinding(const zebx::Finding& finding) override {
    if (m_findings.size() < kMostFindings) m_findings.push_back(finding);
  }

 protected:
  CZebFileInfo m_info;
  std::vector<zebx::Finding> m_findings;
};

class TextReporter final : public Reporter {
 public:
  TextReporter(std::ostream& out, const Settings& settings) : m_out(out), m_settings(settings) {}

  void OnHeader(const CZebFileInfo& info) override {
    Reporter::OnHeader(info);
    const auto id = info.GetCameraID();
    const PictureSize encoded = EncodeSizeOf(info);
    const PictureSize shown = ShowSizeOf(info);
    m_out << m_settings.input << '\n'
          << "  camera     board " << id.m_board << " \"" << info.GetBoardName() << "\", camera "
          << id.m_camera << " \"" << info.GetCameraName() << "\", host \"" << info.GetHostName()
          << "\"\n"
          << "  picture    frame size " << info.GetFrameSize() << ": " << encoded.width << " x "
          << encoded.height << ", shown " << shown.width << " x " << shown.height << ", "
          << StandardOf(info) << '\n'
          << "  header     " << Plural(info.GetSize(), "byte") << ", version "
          << info.GetFileVersion() << (info.IsRemote() != 0 ? ", remote" : "")
          << (info.IsClip() != 0 ? ", clip" : "") << (info.IsRT8Port() != 0 ? ", RT8Port" : "")
          << '\n'
          << "  begin      " << FormatTime(info.GetBeginTime()) << ", time stamp "
          << info.GetBeginTimeStamp() << ", gmt " << info.GetGmt() << '\n'
          << "  end        " << FormatTime(info.GetEndTime()) << '\n';
  }

  void OnBlock(const zebx::CheckedBlock& block) override {
    if (!m_settings.blocks) return;
    m_out << "  block " << block.number << " at " << FormatOffset(block.offset) << ": "
          << Plural(block.header.m_frames, "frame") << ", stamp " << block.header.m_time_stamp
          << ", previous " << Link(block.header.m_previous) << ", next "
          << Link(block.header.m_next) << '\n';
  }

  void OnFrame(const zebx::CheckedFrame& frame) override {
    if (!m_settings.frames) return;
    const FrameHeader& header = frame.header;
    m_out << "  frame " << frame.block << ':' << frame.index << " at " << FormatOffset(frame.offset)
          << ": " << (header.IsIFrame() ? "I" : "P") << ", stamp " << header.m_time_stamp
          << ", video " << header.m_video_bytes << ", speech " << header.m_speech_bytes
          << ", flags " << header.m_flags
          << ((header.m_flags & kFrameVideoLost) != 0 ? ", video lost" : "")
          << (frame.finished ? "" : ", unfinished block") << '\n';
  }

  void Finish(const zebx::CheckSummary& summary) override {
    if (summary.has_header) {
      PrintTotals(summary);
    } else {
      m_out << m_settings.input << '\n'
            << "  length     " << Plural(summary.file_bytes, "byte") << '\n';
    }
    m_out << "  state      " << StateOf(summary) << '\n';
    for (const zebx::Finding& finding : m_findings) m_out << "    " << FindingLine(finding) << '\n';
    const ULONGLONG findings = summary.damages + summary.notes + (summary.unfinished ? 1 : 0);
    if (findings > m_findings.size()) {
      m_out << "    and " << Plural(findings - m_findings.size(), "more finding") << '\n';
    }
  }

 private:
  void PrintTotals(const zebx::CheckSummary& summary) {
    m_out << "  duration   " << FormatDecimals(summary.DurationMs() / kMsPerSecond, 3)
          << " s by time stamps\n"
          << "  chain      " << Plural(static_cast<ULONGLONG>(summary.blocks), "block") << ", "
          << summary.blocks_with_frames << " with frames\n"
          << "  frames     " << FormatCount(summary.frames) << ": "
          << Plural(summary.i_frames, "I-frame") << ", " << FormatCount(summary.voiced_frames)
          << " with speech, " << FormatCount(summary.lost_frames) << " without a signal\n";
    if (summary.finished_frames < summary.frames) {
      m_out << "             " << FormatCount(summary.frames - summary.finished_frames)
            << " of them in a block that was never closed\n";
    }
    m_out << "  length     " << Plural(summary.file_bytes, "byte") << ": video "
          << FormatCount(summary.video_bytes) << ", speech " << FormatCount(summary.speech_bytes)
          << '\n';
  }

  static std::string Link(DWORD offset) {
    return offset == kNoBlock ? "none" : std::to_string(offset);
  }

  std::ostream& m_out;
  const Settings& m_settings;
};

// One object, whose long list of blocks and frames is printed as it is met.
class JsonReporter final : public Reporter {
 public:
  JsonReporter(std::ostream& out, const Settings& settings) : m_out(out), m_settings(settings) {
    m_report["file"] = settings.input;
  }

  void OnHeader(const CZebFileInfo& info) override {
    Reporter::OnHeader(info);
    const auto id = info.GetCameraID();
    const PictureSize encoded = EncodeSizeOf(info);
    const PictureSize shown = ShowSizeOf(info);
    m_report["header"] = {{"version", info.GetFileVersion()},
                          {"bytes", info.GetSize()},
                          {"board", id.m_board},
                          {"camera", id.m_camera},
                          {"board_name", info.GetBoardName()},
                          {"camera_name", info.GetCameraName()},
                          {"host_name", info.GetHostName()},
                          {"frame_size", DWORD{info.GetFrameSize()}},
                          {"standard", StandardOf(info)},
                          {"encode_width", encoded.width},
                          {"encode_height", encoded.height},
                          {"show_width", shown.width},
                          {"show_height", shown.height},
                          {"remote", info.IsRemote() != 0},
                          {"clip", info.IsClip() != 0},
                          {"rt8port", info.IsRT8Port() != 0},
                          {"begin_seconds", info.GetBeginTime().GetTime()},
                          {"begin", FormatTime(info.GetBeginTime())},
                          {"end_seconds", info.GetEndTime().GetTime()},
                          {"end", FormatTime(info.GetEndTime())},
                          {"begin_time_stamp", info.GetBeginTimeStamp()},
                          {"gmt", info.GetGmt()}};
  }

  void OnBlock(const zebx::CheckedBlock& block) override {
    if (!m_settings.blocks) return;
    PrintPart({{"block", block.number},
               {"offset", block.offset},
               {"frames", block.header.m_frames},
               {"time_stamp", block.header.m_time_stamp},
               {"previous", Link(block.header.m_previous)},
               {"next", Link(block.header.m_next)}});
  }

  void OnFrame(const zebx::CheckedFrame& frame) override {
    if (!m_settings.frames) return;
    PrintPart({{"frame", std::to_string(frame.block) + ':' + std::to_string(frame.index)},
               {"offset", frame.offset},
               {"type", frame.header.m_type},
               {"flags", frame.header.m_flags},
               {"time_stamp", frame.header.m_time_stamp},
               {"video_bytes", frame.header.m_video_bytes},
               {"speech_bytes", frame.header.m_speech_bytes},
               {"finished", frame.finished}});
  }

  void Finish(const zebx::CheckSummary& summary) override {
    m_report["totals"] = {{"file_bytes", summary.file_bytes},
                          {"blocks", summary.blocks},
                          {"blocks_with_frames", summary.blocks_with_frames},
                          {"frames", summary.frames},
                          {"finished_frames", summary.finished_frames},
                          {"i_frames", summary.i_frames},
                          {"voiced_frames", summary.voiced_frames},
                          {"lost_frames", summary.lost_frames},
                          {"video_bytes", summary.video_bytes},
                          {"speech_bytes", summary.speech_bytes},
                          {"duration_ms", summary.DurationMs()}};
    m_report["state"] = StateOf(summary);
    m_report["damages"] = summary.damages;
    m_report["notes"] = summary.notes;
    m_report["findings"] = Json::array();
    for (const zebx::Finding& finding : m_findings) m_report["findings"].push_back(JsonOf(finding));
    std::string text = JsonText(std::move(m_report));
    if (m_settings.blocks || m_settings.frames) {
      if (!m_has_parts) m_out << "{\n  \"chain\": [";
      m_out << "\n  ],";
      text.erase(0, 1);  // the bracket that stands before the list
    }
    m_out << text << '\n';
  }

 private:
  void PrintPart(Json part) {
    m_out << (m_has_parts ? "," : "{\n  \"chain\": [") << '\n' << JsonText(std::move(part));
    m_has_parts = true;
  }

  static LONGLONG Link(DWORD offset) { return offset == kNoBlock ? -1 : LONGLONG{offset}; }

  std::ostream& m_out;
  const Settings& m_settings;
  Json m_report;
  bool m_has_parts = false;
};

int Info(const Settings& settings, Console& console) {
  CFile file;
  OpenRecording(file, settings.input);
  std::unique_ptr<Reporter> reporter;
  if (settings.json) {
    reporter = std::make_unique<JsonReporter>(console.out, settings);
  } else {
    reporter = std::make_unique<TextReporter>(console.out, settings);
  }
  const zebx::CheckSummary summary = zebx::CheckRecording(file, *reporter);
  reporter->Finish(summary);
  return summary.IsWhole() ? kExitGood : kExitBad;
}

}  // namespace

void AddInfo(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("info", "show what a recording holds");
  command.Usage({"FILE [--blocks] [--frames] [--json]"});
  command.Describe(
      "Shows the header of a recording, its totals and times, and damage if there is any.");
  command.Argument("FILE", settings->input);
  command.Flag("--blocks", settings->blocks, "every block of the chain");
  command.Flag("--frames", settings->frames, "every frame");
  command.Flag("--json", settings->json, "everything as JSON");
  command.Explain(
      "Exit status: 0 when the recording is whole, 1 when it is damaged, unfinished or none.");
  command.Does([settings](Console& console) { return Info(*settings, console); });
}

}  // namespace zebtool
