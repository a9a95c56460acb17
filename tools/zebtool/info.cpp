// zebtool info: what a recording holds, as text or as JSON.
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "capture/picture_formats.h"
#include "platform/framework/file.h"
#include "tools/zebtool/findings.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/picture_sizes.h"
#include "tools/zebtool/recording_file.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::string_view kHelp =
    "usage: zebtool info FILE [--blocks] [--frames] [--json]\n"
    "\n"
    "Shows the header of a recording, its totals and times, and damage if there is any.\n"
    "\n"
    "  --blocks   every block of the chain\n"
    "  --frames   every frame\n"
    "  --json     everything as JSON\n"
    "\n"
    "Exit status: 0 when the recording is whole, 1 when it is damaged, unfinished or none.\n";

constexpr double kMsPerSecond = 1000;
constexpr std::size_t kMostFindings = 100;

struct What {
  bool blocks = false;
  bool frames = false;
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
  TextReporter(std::ostream& out, What what, std::string path)
      : m_out(out), m_what(what), m_path(std::move(path)) {}

  void OnHeader(const CZebFileInfo& info) override {
    Reporter::OnHeader(info);
    const auto id = info.GetCameraID();
    const PictureSize encoded = EncodeSizeOf(info);
    const PictureSize shown = ShowSizeOf(info);
    m_out << m_path << '\n'
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
    if (!m_what.blocks) return;
    m_out << "  block " << block.number << " at " << FormatOffset(block.offset) << ": "
          << Plural(block.header.m_frames, "frame") << ", stamp " << block.header.m_time_stamp
          << ", previous " << Link(block.header.m_previous) << ", next "
          << Link(block.header.m_next) << '\n';
  }

  void OnFrame(const zebx::CheckedFrame& frame) override {
    if (!m_what.frames) return;
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
      m_out << m_path << '\n' << "  length     " << Plural(summary.file_bytes, "byte") << '\n';
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
  What m_what;
  std::string m_path;
};

class JsonReporter final : public Reporter {
 public:
  JsonReporter(std::ostream& out, What what, const std::string& path) : m_json(out), m_what(what) {
    m_json.BeginObject();
    m_json.Value("file", path);
  }

  void OnHeader(const CZebFileInfo& info) override {
    Reporter::OnHeader(info);
    const auto id = info.GetCameraID();
    const PictureSize encoded = EncodeSizeOf(info);
    const PictureSize shown = ShowSizeOf(info);
    m_json.BeginObject("header");
    m_json.Value("version", info.GetFileVersion());
    m_json.Value("bytes", info.GetSize());
    m_json.Value("board", id.m_board);
    m_json.Value("camera", id.m_camera);
    m_json.Value("board_name", info.GetBoardName());
    m_json.Value("camera_name", info.GetCameraName());
    m_json.Value("host_name", info.GetHostName());
    m_json.Value("frame_size", DWORD{info.GetFrameSize()});
    m_json.Value("standard", StandardOf(info));
    m_json.Value("encode_width", encoded.width);
    m_json.Value("encode_height", encoded.height);
    m_json.Value("show_width", shown.width);
    m_json.Value("show_height", shown.height);
    m_json.Value("remote", info.IsRemote() != 0);
    m_json.Value("clip", info.IsClip() != 0);
    m_json.Value("rt8port", info.IsRT8Port() != 0);
    m_json.Value("begin_seconds", info.GetBeginTime().GetTime());
    m_json.Value("begin", FormatTime(info.GetBeginTime()));
    m_json.Value("end_seconds", info.GetEndTime().GetTime());
    m_json.Value("end", FormatTime(info.GetEndTime()));
    m_json.Value("begin_time_stamp", info.GetBeginTimeStamp());
    m_json.Value("gmt", info.GetGmt());
    m_json.EndObject();
    if (m_what.blocks || m_what.frames) m_json.BeginArray("chain");
  }

  void OnBlock(const zebx::CheckedBlock& block) override {
    if (!m_what.blocks) return;
    m_json.BeginObject();
    m_json.Value("block", block.number);
    m_json.Value("offset", block.offset);
    m_json.Value("frames", block.header.m_frames);
    m_json.Value("time_stamp", block.header.m_time_stamp);
    PutLink("previous", block.header.m_previous);
    PutLink("next", block.header.m_next);
    m_json.EndObject();
  }

  void OnFrame(const zebx::CheckedFrame& frame) override {
    if (!m_what.frames) return;
    m_json.BeginObject();
    m_json.Value("frame", std::to_string(frame.block) + ':' + std::to_string(frame.index));
    m_json.Value("offset", frame.offset);
    m_json.Value("type", frame.header.m_type);
    m_json.Value("flags", frame.header.m_flags);
    m_json.Value("time_stamp", frame.header.m_time_stamp);
    m_json.Value("video_bytes", frame.header.m_video_bytes);
    m_json.Value("speech_bytes", frame.header.m_speech_bytes);
    m_json.Value("finished", frame.finished);
    m_json.EndObject();
  }

  void Finish(const zebx::CheckSummary& summary) override {
    if (summary.has_header && (m_what.blocks || m_what.frames)) m_json.EndArray();
    m_json.BeginObject("totals");
    m_json.Value("file_bytes", summary.file_bytes);
    m_json.Value("blocks", summary.blocks);
    m_json.Value("blocks_with_frames", summary.blocks_with_frames);
    m_json.Value("frames", summary.frames);
    m_json.Value("finished_frames", summary.finished_frames);
    m_json.Value("i_frames", summary.i_frames);
    m_json.Value("voiced_frames", summary.voiced_frames);
    m_json.Value("lost_frames", summary.lost_frames);
    m_json.Value("video_bytes", summary.video_bytes);
    m_json.Value("speech_bytes", summary.speech_bytes);
    m_json.Value("duration_ms", summary.DurationMs());
    m_json.EndObject();
    m_json.Value("state", StateOf(summary));
    m_json.Value("damages", summary.damages);
    m_json.Value("notes", summary.notes);
    m_json.BeginArray("findings");
    for (const zebx::Finding& finding : m_findings) PutFinding(m_json, finding);
    m_json.EndArray();
    m_json.EndObject();
  }

 private:
  void PutLink(std::string_view key, DWORD offset) {
    if (offset == kNoBlock) {
      m_json.Value(key, -1);
    } else {
      m_json.Value(key, offset);
    }
  }

  JsonWriter m_json;
  What m_what;
};

int RunInfo(Arguments arguments, Console& console) {
  constexpr auto kFlag = OptionSpec::Kind::kFlag;
  const Options options(
      {"info", {{"--blocks", kFlag}, {"--frames", kFlag}, {"--json", kFlag}}, {"FILE"}, 1},
      arguments);
  const std::string& path = options.Positionals()[0];
  CFile file;
  OpenRecording(file, path);
  const What what{options.Has("--blocks"), options.Has("--frames")};
  std::unique_ptr<Reporter> reporter;
  if (options.Has("--json")) {
    reporter = std::make_unique<JsonReporter>(console.out, what, path);
  } else {
    reporter = std::make_unique<TextReporter>(console.out, what, path);
  }
  const zebx::CheckSummary summary = zebx::CheckRecording(file, *reporter);
  reporter->Finish(summary);
  return summary.IsWhole() ? kExitGood : kExitBad;
}

}  // namespace

const Subcommand kInfoCommand = {"info", "show what a recording holds", kHelp, RunInfo};

}  // namespace zebtool
