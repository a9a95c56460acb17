// zebtool clip: a part of a recording, as a recording of its own.
#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>

#include "platform/framework/file.h"
#include "recovery/recording_check.h"
#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/frame_position.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/recording_file.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

const std::string kHelp =
    "usage: zebtool clip FILE OUT.zebz --from TIME --to TIME\n"
    "       zebtool clip FILE OUT.zebz --from-block A [--to-block B [--to-index I]]\n"
    "\n"
    "Cuts a part of a recording out into a recording of its own.\n"
    "\n"
    "  --from TIME      clips begin with a block: with the one that TIME lies in; default: the "
    "first\n"
    "  --to TIME        up to the last frame that is not after TIME; default: the end\n"
    "  --from-block A   blocks A to B - 1 whole (counted from 0)...\n"
    "  --to-block B     ... default: all blocks from A on\n"
    "  --to-index I     ... and the first I frames of block B; default 0\n"
    "\n" +
    std::string(kMomentHelp) + "\nAn output that could not be written whole is removed.\n";

constexpr double kMsPerSecond = 1000;
constexpr DWORD kMaxBlock = std::numeric_limits<int>::max();

// As ClipFile takes it.
struct Range {
  int from_block = 0;
  int to_block = std::numeric_limits<int>::max();
  int to_index = 0;
};

// Finds the blocks and the frame that a stretch of time leads to. Blocks that were never closed are
// left out, as the library does not read them.
class RangeFinder final : public zebx::CheckVisitor {
 public:
  RangeFinder(LONGLONG from_ms, LONGLONG to_ms) : m_from_ms(from_ms), m_to_ms(to_ms) {}

  void OnHeader(const CZebFileInfo& info) override { m_begin_stamp = info.GetBeginTimeStamp(); }
  void OnFrame(const zebx::CheckedFrame& frame) override {
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

bool IsByTime(const Options& options) {
  return options.Has("--from") || options.Has("--to");
}

void CheckUsage(const Options& options) {
  const bool by_block = options.Has("--from-block");
  if (IsByTime(options) && (by_block || options.Has("--to-block") || options.Has("--to-index"))) {
    options.Fail("give times or blocks, not both");
  }
  if (!IsByTime(options) && !by_block) options.Fail("--from TIME or --from-block A is missing");
  if (options.Has("--to-index") && !options.Has("--to-block")) {
    options.Fail("--to-index needs --to-block");
  }
}

Range ReadBlocks(const Options& options) {
  Range range;
  range.from_block = static_cast<int>(options.Number("--from-block", 0, kMaxBlock).value_or(0));
  range.to_block = static_cast<int>(options.Number("--to-block", 0, kMaxBlock).value_or(kMaxBlock));
  range.to_index = static_cast<int>(options.Number("--to-index", 0, kMaxBlock).value_or(0));
  if (range.to_block < range.from_block ||
      (range.to_block == range.from_block && range.to_index == 0)) {
    options.Fail("there is nothing between --from-block and --to-block");
  }
  return range;
}

Range ReadTimes(const Options& options, CFile& raw, CTime begin) {
  const LONGLONG from_ms = ReadMomentMs(options, "--from", begin).value_or(0);
  const LONGLONG to_ms =
      ReadMomentMs(options, "--to", begin).value_or(std::numeric_limits<LONGLONG>::max());
  if (to_ms < from_ms) options.Fail("--to lies before --from");
  RangeFinder finder(from_ms, to_ms);
  zebx::CheckRecording(raw, finder);
  const auto range = finder.Result();
  if (!range) {
    throw JobError("the recording has no frame in that stretch; 'zebtool info' shows its times");
  }
  return *range;
}

void Clip(CZebFile& recording, const std::string& output, const Range& range) {
  const auto give_up = [&](const std::string& why) {
    std::error_code ignored;
    std::filesystem::remove(ToHostPath(output), ignored);
    throw JobError("cannot write '" + output + "': " + why);
  };
  try {
    if (recording.ClipFile(output, range.from_block, range.to_block, range.to_index) == 0) {
      give_up("it cannot be created, or the recording ends early ('zebtool verify' tells)");
    }
  } catch (const CFileException& failure) {
    give_up(failure.what());
  }
}

// What the clip really holds, from the file itself.
void PrintClip(const std::string& output, std::ostream& out) {
  CFile file;
  OpenRecording(file, output);
  struct : zebx::CheckVisitor {
    void OnHeader(const CZebFileInfo& header) override { info = header; }
    CZebFileInfo info;
  } visitor;
  const zebx::CheckSummary summary = zebx::CheckRecording(file, visitor);
  out << output << ": " << Plural(summary.frames, "frame") << " in "
      << Plural(static_cast<ULONGLONG>(summary.blocks_with_frames), "block") << ", "
      << Plural(summary.file_bytes, "byte") << '\n'
      << "  clipped    " << FormatTime(visitor.info.GetBeginTime()) << " to "
      << FormatTime(visitor.info.GetEndTime()) << ", "
      << FormatDecimals(summary.DurationMs() / kMsPerSecond, 3) << " s\n";
}

int RunClip(Arguments arguments, Console& console) {
  const Options options({"clip",
                         {{"--from"}, {"--to"}, {"--from-block"}, {"--to-block"}, {"--to-index"}},
                         {"FILE", "OUT.zebz"},
                         2},
                        arguments);
  CheckUsage(options);
  const std::string& input = options.Positionals()[0];
  const std::string& output = options.Positionals()[1];
  Range range;
  if (!IsByTime(options)) range = ReadBlocks(options);
  RefuseSameFile(input, output);

  CZebFile recording;
  OpenRecording(recording, input);
  if (IsByTime(options)) {
    CFile raw;
    OpenRecording(raw, input);
    range = ReadTimes(options, raw, recording.GetBeginTime());
  }
  if (range.from_block >= recording.GetTotalBlock()) {
    throw JobError("there is no block " + std::to_string(range.from_block) + ": '" + input +
                   "' has " + Plural(static_cast<ULONGLONG>(recording.GetTotalBlock()), "block"));
  }
  Clip(recording, output, range);
  PrintClip(output, console.out);
  return kExitGood;
}

}  // namespace

const Subcommand kClipCommand = {"clip", "cut a part of a recording out", kHelp, RunClip};

}  // namespace zebtool
