// zebtool salvage: a whole recording out of one whose writer died or whose chain is damaged.
#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "platform/framework/file.h"
#include "record/zeb_frame_data.h"
#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/frame_recovery.h"
#include "tools/zebtool/header_recovery.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/progress.h"
#include "tools/zebtool/recording_file.h"
#include "tools/zebtool/recording_writer.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

constexpr std::string_view kHelp =
    "usage: zebtool salvage FILE OUT.zebz [--json]\n"
    "\n"
    "Makes a whole recording out of one whose writer died or which is damaged: every frame that "
    "is\n"
    "intact on disk goes into OUT.zebz, in order, with its time stamp; those of a block that was\n"
    "never closed included. After damaged bytes it goes on where frames are recognised again. "
    "Only\n"
    "frames ahead of the first I-frame are left out, for a recording has to begin with one. A\n"
    "damaged header is rebuilt as well as it can be. FILE is never changed.\n"
    "\n"
    "  --json   the report as JSON\n"
    "\n"
    "Exit status: 0 when at least one frame was saved, 1 otherwise. A full disk gives 1; what was\n"
    "written until then stays.\n";

// Everything after so many holes is only counted.
constexpr std::size_t kMostHoles = 100;

struct Report {
  ULONGLONG frames = 0;
  ULONGLONG frame_bytes = 0;
  ULONGLONG lost_frames = 0;  // intact, but ahead of the first I-frame
  ULONGLONG lost_frame_bytes = 0;
  std::vector<Hole> holes;
  ULONGLONG hole_count = 0;
  ULONGLONG hole_bytes = 0;

  void Add(const Hole& hole) {
    ++hole_count;
    hole_bytes += hole.end - hole.begin;
    if (holes.size() < kMostHoles) holes.push_back(hole);
  }
};

class Salvager {
 public:
  Salvager(const std::string& input, std::string output, Console& console)
      : m_output(std::move(output)), m_console(console) {
    OpenRecording(m_file, input);
  }

  int Run(bool json) {
    RecordingBytes bytes(m_file);
    const RecoveredHeader header = RecoverHeader(m_file, bytes);
    FrameRecovery recovery(bytes, header.first_block, header.at_block,
                           [&](const Hole& hole) { m_report.Add(hole); });
    Progress progress(m_console, "salvage");
    while (const auto frame = recovery.Next()) {
      Save(*frame, header);
      progress.Show(m_report.frames);
    }
    if (!m_writer) {
      throw JobError("no I-frame is intact in " + Plural(bytes.Length(), "byte") +
                     ", so there is nothing to save; '" + m_output + "' was not written");
    }
    m_writer->Finish();
    if (json) {
      PrintJson(header);
    } else {
      Print(header);
    }
    return kExitGood;
  }

 private:
  void Save(const RecoveredFrame& found, const RecoveredHeader& header) {
    if (!m_writer && !found.header.IsIFrame()) {
      Lose(found);
      return;
    }
    m_frame.Reserve(found.header);
    m_file.Seek(found.offset);
    if (!m_frame.ReadFrom(m_file)) {
      m_report.Add({found.offset, found.offset + found.header.TotalBytes()});
      return;
    }
    if (!m_writer) {
      const DWORD stamp = found.header.m_time_stamp;
      m_writer.emplace(header.info, m_output, BeginTimeOf(header, stamp), stamp);
      m_writer->SetGmt(header.info.GetGmt());
    }
    if (!m_writer->Append(m_frame)) {
      Lose(found);
      return;
    }
    ++m_report.frames;
    m_report.frame_bytes += found.header.TotalBytes();
  }

  void Lose(const RecoveredFrame& found) {
    ++m_report.lost_frames;
    m_report.lost_frame_bytes += found.header.TotalBytes();
  }

  void Print(const RecoveredHeader& header) {
    std::ostream& out = m_console.out;
    for (const WrittenFile& file : m_writer->Files()) {
      out << file.path << ": " << Plural(file.frames, "frame") << " in "
          << Plural(static_cast<ULONGLONG>(file.blocks), "block") << ", "
          << Plural(file.bytes, "byte") << '\n';
    }
    out << "  saved      " << Plural(m_report.frames, "frame") << ", "
        << Plural(m_report.frame_bytes, "byte") << '\n';
    for (const std::string& remark : header.remarks) out << "  header     " << remark << '\n';
    if (m_report.lost_frames == 0 && m_report.hole_count == 0) {
      out << "  lost       nothing\n";
      return;
    }
    if (m_report.lost_frames > 0) {
      out << "  lost       " << Plural(m_report.lost_frames, "frame") << " ("
          << Plural(m_report.lost_frame_bytes, "byte") << ") ahead of the first I-frame\n";
    }
    for (const Hole& hole : m_report.holes) {
      out << "  lost       " << Plural(hole.end - hole.begin, "byte") << " at "
          << FormatOffset(hole.begin) << '\n';
    }
    if (m_report.hole_count > m_report.holes.size()) {
      out << "  lost       " << Plural(m_report.hole_bytes, "byte") << " in "
          << Plural(m_report.hole_count, "place") << " in all\n";
    }
  }

  void PrintJson(const RecoveredHeader& header) {
    JsonWriter json(m_console.out);
    json.BeginObject();
    json.BeginArray("files");
    for (const WrittenFile& file : m_writer->Files()) {
      json.BeginObject();
      json.Value("path", file.path);
      json.Value("frames", file.frames);
      json.Value("blocks", file.blocks);
      json.Value("bytes", file.bytes);
      json.EndObject();
    }
    json.EndArray();
    json.Value("saved_frames", m_report.frames);
    json.Value("saved_bytes", m_report.frame_bytes);
    json.Value("lost_frames", m_report.lost_frames);
    json.Value("lost_frame_bytes", m_report.lost_frame_bytes);
    json.Value("holes", m_report.hole_count);
    json.Value("hole_bytes", m_report.hole_bytes);
    json.BeginArray("first_holes");
    for (const Hole& hole : m_report.holes) {
      json.BeginObject();
      json.Value("offset", hole.begin);
      json.Value("bytes", hole.end - hole.begin);
      json.EndObject();
    }
    json.EndArray();
    json.BeginArray("header_remarks");
    for (const std::string& remark : header.remarks) json.Value({}, remark);
    json.EndArray();
    json.EndObject();
  }

  std::string m_output;
  Console& m_console;
  CFile m_file;
  CZebFrameData m_frame;
  std::optional<RecordingWriter> m_writer;
  Report m_report;
};

int RunSalvage(Arguments arguments, Console& console) {
  const Options options({"salvage", {{"--json", OptionSpec::Kind::kFlag}}, {"FILE", "OUT.zebz"}, 2},
                        arguments);
  const std::string& input = options.Positionals()[0];
  const std::string& output = options.Positionals()[1];
  RefuseSameFile(input, output);
  return Salvager(input, output, console).Run(options.Has("--json"));
}

}  // namespace

const Subcommand kSalvageCommand = {"salvage", "save every intact frame of a broken recording",
                                    kHelp, RunSalvage};

}  // namespace zebtool
