// zebtool clip: a part of a recording, as a recording of its own.
#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

#include "platform/framework/file.h"
#include "recovery/recording_check.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/output_file.h"
#include "tools/zebtool/recordings/frame_position.h"
#include "tools/zebtool/recordings/recording_file.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr double kMsPerSecond = 1000;
constexpr Bounds kBlock = {0, std::numeric_limits<int>::max()};

struct Settings {
  std::string input;
  std::string output;
  std::optional<Moment> from;
  std::optional<Moment> to;
  std::optional<DWORD> from_block;
  std::optional<DWORD> to_block;
  std::optional<DWORD> to_index;
  bool force = false;

  bool IsByTime() const { return from || to; }
};

// As ClipFile takes it.
struct Range {
  int from_block = 0;
  int to_block = std::numeric_limits<int>::max();
  int to_index = 0;
};

// Finds the blocks and the frame that a stretch of time leads to. Blocks that were never closed are
// left out, as the library does not read them.
class RangeFinder final : public CheckVisitor {
 public:
  RangeFinder(LONGLONG from_ms, LONGLONG to_ms) : m_from_ms(from_ms), m_to_ms(to_ms) {}

  void OnHeader(const CZebFileInfo& info) override { m_begin_stamp = info.GetBeginTimeStamp(); }
  void OnFrame(const CheckedFrame& frame) override {
    if (!frame.finished) return;
    const DWORD at_ms = frame.header.m_time_stamp - m_begin_stamp;
    if (frame.index == 0 && at_ms <= m_from_ms) m_range.from_block = frame.block;
    m_ended = m_ended || at_ms > m_to_ms;
    m_last_ms = at_ms;
    if (m_ended) return;
    m_range.to_block = frame.block;
    m_range.to_index = frame.index + 1;
    m_found = true;
  }

  // Nothing when no frame lies in the stretch.
  std::optional<Range> Result() const {
    if (!m_found || m_from_ms > m_last_ms || m_range.to_block < m_range.from_block) {
      return std::nullopt;
    }
    return m_range;
  }

 private:
  LONGLONG m_from_ms;
  LONGLONG m_to_ms;
  DWORD m_begin_stamp = 0;
  LONGLONG m_last_ms = 0;
  Range m_range;
  bool m_found = false;
  bool m_ended = false;
};

void CheckUsage(const Settings& settings) {
  if (settings.IsByTime() && (settings.from_block || settings.to_block || settings.to_index)) {
    throw UsageError("give times or blocks, not both");
  }
  if (!settings.IsByTime() && !settings.from_block) {
    throw UsageError("--from TIME or --from-block A is missing");
  }
  if (settings.to_index && !settings.to_block) throw UsageError("--to-index needs --to-block");
}

Range BlocksOf(const Settings& settings) {
  Range range;
  range.from_block = static_cast<int>(settings.from_block.value_or(0));
  range.to_block = static_cast<int>(settings.to_block.value_or(kBlock.most));
  range.to_index = static_cast<int>(settings.to_index.value_or(0));
  if (range.to_block < range.from_block ||
      (range.to_block == range.from_block && range.to_index == 0)) {
    throw UsageError("there is nothing between --from-block and --to-block");
  }
  return range;
}

Range FindTimes(const Settings& settings, CTime begin) {
  const LONGLONG from_ms = settings.from ? settings.from->MsFrom(begin) : 0;
  const LONGLONG to_ms =
      settings.to ? settings.to->MsFrom(begin) : std::numeric_limits<LONGLONG>::max();
  if (to_ms < from_ms) throw UsageError("--to lies before --from");
  CFile raw;
  OpenRecording(raw, settings.input);
  RangeFinder finder(from_ms, to_ms);
  CheckRecording(raw, finder);
  const auto range = finder.Result();
  if (!range) {
    throw JobError("the recording has no frame in that stretch; 'zebtool info' shows its times");
  }
  return *range;
}

// What the clip holds, from the file itself.
struct Clipped : CheckVisitor {
  explicit Clipped(const std::string& path) {
    CFile file;
    OpenRecording(file, path);
    summary = CheckRecording(file, *this);
  }
  void OnHeader(const CZebFileInfo& header) override { info = header; }

  CZebFileInfo info;
  CheckSummary summary;
};

Clipped WriteClip(CZebFile& recording, const std::string& path, const Range& range) {
  try {
    if (recording.ClipFile(path, range.from_block, range.to_block, range.to_index) == 0) {
      throw JobError("cannot write '" + path +
                     "', or the recording ends early ('zebtool verify' tells)");
    }
  } catch (const CFileException& failure) {
    throw JobError("cannot write '" + path + "': " + failure.what());
  }
  Clipped clipped(path);
  if (clipped.summary.frames == 0) {
    throw JobError("there is no frame between these blocks; 'zebtool info --blocks' shows them");
  }
  return clipped;
}

void Print(const std::string& path, const Clipped& clip, std::ostream& out) {
  out << path << ": " << Plural(clip.summary.frames, "frame") << " in "
      << Plural(static_cast<ULONGLONG>(clip.summary.blocks_with_frames), "block") << ", "
      << Plural(clip.summary.file_bytes, "byte") << '\n'
      << "  clipped    " << FormatTime(clip.info.GetBeginTime()) << " to "
      << FormatTime(clip.info.GetEndTime()) << ", "
      << FormatDecimals(clip.summary.DurationMs() / kMsPerSecond, 3) << " s\n";
}

int Clip(const Settings& settings, Console& console) {
  CheckUsage(settings);
  Range range;
  if (!settings.IsByTime()) range = BlocksOf(settings);
  RefuseSameFile(settings.input, settings.output);

  CZebFile recording;
  OpenRecording(recording, settings.input);
  if (settings.IsByTime()) range = FindTimes(settings, recording.GetBeginTime());
  if (range.from_block >= recording.GetTotalBlock()) {
    throw JobError("there is no block " + std::to_string(range.from_block) + ": '" +
                   settings.input + "' has " +
                   Plural(static_cast<ULONGLONG>(recording.GetTotalBlock()), "block"));
  }
  OutputFile output(settings.output, Existing{settings.force});
  const Clipped clip = WriteClip(recording, output.TemporaryPath(), range);
  output.Finish();
  Print(settings.output, clip, console.out);
  return kExitGood;
}

}  // namespace

void AddClip(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("clip", "cut a part of a recording out");
  command.Usage({"FILE OUT.zebz --from TIME --to TIME",
                 "FILE OUT.zebz --from-block A [--to-block B [--to-index I]]"});
  command.Describe("Cuts a part of a recording out into a recording of its own.");
  command.Argument("FILE", settings->input);
  command.Argument("OUT.zebz", settings->output);
  AddMomentOption(command, "--from", settings->from,
                  "clips begin with a block: with the one that TIME lies in; default: the first");
  AddMomentOption(command, "--to", settings->to,
                  "up to the last frame that is not after TIME; default: the end");
  command.Option("--from-block", "A", settings->from_block, kBlock,
                 "blocks A to B - 1 whole (counted from 0)...");
  command.Option("--to-block", "B", settings->to_block, kBlock,
                 "... default: all blocks from A on");
  command.Option("--to-index", "I", settings->to_index, kBlock,
                 "... and the first I frames of block B; default 0");
  AddForceOption(command, settings->force);
  ExplainMoments(command);
  command.Does([settings](Console& console) { return Clip(*settings, console); });
}

}  // namespace zebtool
