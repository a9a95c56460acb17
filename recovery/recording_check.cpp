#include "recovery/recording_check.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/framework/byte_order.h"
#include "platform/framework/file.h"
#include "record/header_format.h"
#include "recovery/frame_signs.h"
#include "recovery/header_check.h"
#include "recovery/open_or_throw.h"
#include "recovery/stamp_rule.h"

namespace zebx {
namespace {

using Kind = Finding::Kind;
using Severity = Finding::Severity;

// Begin and end time are whole seconds of the wall clock, time stamps come from another clock.
constexpr LONGLONG kEndTimeSlackSeconds = 2;
// A wall clock that was set while recording explains less than this.
constexpr LONGLONG kEndTimeLimitSeconds = 24 * 60 * 60;

// One walk over a file.
class Checker {
 public:
  Checker(CFile& file, CheckVisitor& visitor, const ProgressCallback& progress)
      : m_file(file), m_visitor(visitor), m_progress(progress) {}

  CheckSummary Run() {
    m_length = m_file.GetLength();
    m_summary.file_bytes = m_length;
    const HeaderCheck header = CheckHeader(m_file);
    for (const Finding& finding : header.findings) Report(finding);
    if (!header.readable) return m_summary;
    m_summary.has_header = true;
    m_visitor.OnHeader(header.info);
    FollowChain(header.first_block);
    if (!m_progress.IsCancelled()) CheckTimes(header.info);
    m_summary.cancelled = !m_progress.Pass(m_length, m_length);
    return m_summary;
  }

 private:
  void FollowChain(ULONGLONG offset) {
    DWORD previous = kNoBlock;
    while (const auto block = ReadBlock(offset, previous)) {
      previous = static_cast<DWORD>(offset);
      const auto next =
          block->header.m_next == kNoBlock ? CheckLastBlock(*block) : CheckClosedBlock(*block);
      if (!next || m_progress.IsCancelled()) return;
      offset = *next;
    }
  }

  std::optional<CheckedBlock> ReadBlock(ULONGLONG offset, DWORD previous) {
    std::array<BYTE, kBlockHeaderBytes> bytes{};
    m_file.Seek(offset);
    const std::size_t count = m_file.Read(bytes);
    if (count < bytes.size()) {
      Report({Severity::kUnfinished, Kind::kNoBlockHeader, offset, m_summary.blocks, -1, count});
      return std::nullopt;
    }
    const CheckedBlock block{m_summary.blocks++, offset, BlockHeader::Parse(bytes)};
    m_visitor.OnBlock(block);
    if (block.header.m_previous != previous) {
      Report(block, Kind::kPreviousLink, offset, block.header.m_previous, previous);
    }
    const auto reserved =
        ByteReader(std::span(bytes).subspan(BlockHeader::kReservedAt)).Get<WORD>();
    if (reserved != 0) {
      Report(block, Kind::kReservedField, offset + BlockHeader::kReservedAt, reserved);
    }
    return block;
  }

  // Where the next block stands; nothing when the chain cannot be followed beyond this one.
  std::optional<ULONGLONG> CheckClosedBlock(const CheckedBlock& block) {
    const ULONGLONG next = block.header.m_next;
    if (next < block.offset + kBlockHeaderBytes) {
      Report(block, Kind::kNextLink, block.offset, next);
      CheckFrames(block, m_length, true);
      return std::nullopt;
    }
    if (block.header.m_frames == 0) Report(block, Kind::kEmptyBlock, block.offset);
    if (next > m_length) {
      const ULONGLONG end = CheckFrames(block, m_length, true);
      Report(block, Kind::kCutBlock, m_length, m_length - std::min(end, m_length), next);
      return std::nullopt;
    }
    const ULONGLONG end = CheckFrames(block, next, true);
    if (end < next) Report(block, Kind::kBytesLeftOver, end, next - end);
    ++m_closed_blocks;
    return next;
  }

  // Where the writer has put a further block, when it died before this one led there.
  std::optional<ULONGLONG> CheckLastBlock(const CheckedBlock& block) {
    const ULONGLONG body = block.offset + kBlockHeaderBytes;
    if (block.header.m_frames > 0) {
      const ULONGLONG end = CheckFrames(block, m_length, true);
      Report(block, Kind::kNoBlockBehind, block.offset);
      if (end < m_length) Report(block, Kind::kBytesLeftOver, end, m_length - end);
      return std::nullopt;
    }
    if (body != m_length) return CheckOpenBlock(block, body);
    if (block.number == 0) {
      Report({Severity::kUnfinished, Kind::kNoFrameYet, block.offset, block.number});
    } else {
      m_terminated = !m_summary.unfinished;
    }
    return std::nullopt;
  }

  // Only the writer's death leaves frames behind an empty block header.
  std::optional<ULONGLONG> CheckOpenBlock(const CheckedBlock& block, ULONGLONG body) {
    const ULONGLONG before = m_summary.frames;
    const ULONGLONG end = CheckFrames(block, m_length, false);
    const ULONGLONG frames = m_summary.frames - before;
    const auto next = FrameAt(end);
    if (frames > 0 && next && IsNewBlock(*next, block.offset) &&
        m_length - end >= kBlockHeaderBytes) {
      Report({Severity::kUnfinished, Kind::kOpenBlock, block.offset, block.number, -1, frames});
      return end;
    }
    const bool is_cut_frame =
        m_length - end < kVoicedFrameHeaderBytes || (next && LooksLikeFrame(*next));
    if (frames > 0 || is_cut_frame || IsZeroFrom(end)) {
      Report({Severity::kUnfinished, Kind::kOpenBlock, block.offset, block.number, -1, frames,
              m_length - end});
    }
    // Zeros are what a power failure leaves of a frame whose length reached the disk alone.
    if (!is_cut_frame && !IsZeroFrom(end)) {
      Report(block, Kind::kBytesLeftOver, frames > 0 ? end : body, m_length - end);
    }
    return std::nullopt;
  }

  bool IsZeroFrom(ULONGLONG offset) {
    std::array<BYTE, 4096> piece;
    m_file.Seek(offset);
    while (const std::size_t count = m_file.Read(piece)) {
      const auto bytes = std::span(piece).first(count);
      if (std::ranges::any_of(bytes, [](BYTE byte) { return byte != 0; })) return false;
    }
    return true;
  }

  // Walks the frames of a block up to `limit` and returns where they end.
  ULONGLONG CheckFrames(const CheckedBlock& block, ULONGLONG limit, bool finished) {
    ULONGLONG offset = block.offset + kBlockHeaderBytes;
    for (int index = 0; !finished || index < block.header.m_frames; ++index) {
      if (!m_progress.Pass(offset, m_length) || (!finished && offset == limit)) break;
      const auto header = FrameAt(offset);
      const bool whole = header && offset + header->TotalBytes() <= limit;
      const bool is_frame =
          finished || (whole && LooksLikeFrame(*header) && !IsNewBlock(*header, block.offset));
      if (!whole || !is_frame) {
        if (finished && limit < m_length) ReportBrokenFrame(block, index, offset, header, limit);
        break;
      }
      CheckFrame(block, {block.number, index, offset, *header, finished});
      offset += header->TotalBytes();
    }
    return offset;
  }

  std::optional<FrameHeader> FrameAt(ULONGLONG offset) {
    m_file.Seek(offset);
    return FrameHeader::Read(m_file);
  }

  void ReportBrokenFrame(const CheckedBlock& block, int index, ULONGLONG offset,
                         const std::optional<FrameHeader>& header, ULONGLONG limit) {
    if (offset >= limit || !header) {
      Report(block, Kind::kMissingFrame, offset, block.header.m_frames, 0, index);
    } else {
      Report(block, Kind::kFrameTooLong, offset, header->TotalBytes(), limit - offset, index);
    }
  }

  void CheckFrame(const CheckedBlock& block, const CheckedFrame& frame) {
    const FrameHeader& header = frame.header;
    const bool first_of_file = m_summary.frames == 0;
    if (first_of_file) m_summary.first_stamp = header.m_time_stamp;
    const DWORD before = m_summary.last_stamp;
    Count(frame);
    m_visitor.OnFrame(frame);
    if (!first_of_file && GoesBack(before, header.m_time_stamp)) {
      Report(block, Kind::kStampGoesBack, frame.offset, header.m_time_stamp, before, frame.index);
    }
    if (frame.index == 0) CheckFirstFrame(block, frame);
  }

  void CheckFirstFrame(const CheckedBlock& block, const CheckedFrame& frame) {
    const FrameHeader& header = frame.header;
    if (!header.IsIFrame()) Report(block, Kind::kNoIFrame, frame.offset, header.m_type, 0, 0);
    ++m_summary.blocks_with_frames;
    if (block.number == 0) m_first_block_stamp = block.header.m_time_stamp;
    if (!frame.finished || block.header.m_time_stamp == header.m_time_stamp) return;
    // A file of prepared blocks keeps the stamp of its creation in its first block header, and its
    // clips inherit it.
    Report({block.number == 0 ? Severity::kNote : Severity::kDamage, Kind::kBlockStamp,
            block.offset, block.number, -1, block.header.m_time_stamp, header.m_time_stamp});
  }

  void Count(const CheckedFrame& frame) {
    ++m_summary.frames;
    if (frame.finished) ++m_summary.finished_frames;
    if (frame.header.IsIFrame()) ++m_summary.i_frames;
    if (frame.header.IsVoice()) ++m_summary.voiced_frames;
    if ((frame.header.m_flags & kFrameVideoLost) != 0) ++m_summary.lost_frames;
    m_summary.video_bytes += frame.header.m_video_bytes;
    m_summary.speech_bytes += frame.header.m_speech_bytes;
    m_summary.last_stamp = frame.header.m_time_stamp;
  }

  // The header's times against the stamps. A header whose first block was never closed is still
  // that of the creation.
  void CheckTimes(const CZebFileInfo& info) {
    if (m_summary.finished_frames == 0) return;
    const DWORD begin = info.GetBeginTime().GetTime();
    const DWORD end = info.GetEndTime().GetTime();
    if (end < begin) {
      Report({Severity::kDamage, Kind::kEndBeforeBegin, RecordingHeader::kEndTimeAt, -1, -1, end,
              begin});
      return;
    }
    const DWORD begin_stamp = info.GetBeginTimeStamp();
    if (begin_stamp != m_summary.first_stamp) {
      // Clips of files of prepared blocks begin with the first block header's stamp. A writer that
      // closes the first block brings the header up to date behind it.
      const bool is_behind = !m_terminated && m_closed_blocks == 1;
      Report({begin_stamp == m_first_block_stamp ? Severity::kNote
              : is_behind                        ? Severity::kUnfinished
                                                 : Severity::kDamage,
              Kind::kBeginTimeStamp, RecordingHeader::kBeginTimeStampAt, -1, -1, begin_stamp,
              m_summary.first_stamp});
      return;
    }
    if (!m_terminated) return;  // the end time is that of the whole recording
    const DWORD by_stamps = info.GetTime(m_summary.last_stamp).GetTime();
    const LONGLONG late = LONGLONG{end} - by_stamps;
    if (late > -kEndTimeSlackSeconds && late < kEndTimeSlackSeconds) return;
    // Less than a day is normal for frames from before an alarm, and when the clock was set.
    const bool is_normal = late >= -kEndTimeLimitSeconds && late <= kEndTimeLimitSeconds;
    Report({is_normal ? Severity::kNote : Severity::kDamage, Kind::kEndTime,
            RecordingHeader::kEndTimeAt, -1, -1, end, by_stamps});
  }

  void Report(const CheckedBlock& block, Kind kind, ULONGLONG offset, ULONGLONG found = 0,
              ULONGLONG expected = 0, int frame = -1) {
    Report({Severity::kDamage, kind, offset, block.number, frame, found, expected});
  }
  void Report(const Finding& finding) {
    if (finding.severity == Severity::kNote) ++m_summary.notes;
    if (finding.severity == Severity::kDamage) ++m_summary.damages;
    if (finding.severity == Severity::kUnfinished) m_summary.unfinished = true;
    m_visitor.OnFinding(finding);
  }

  CFile& m_file;
  CheckVisitor& m_visitor;
  ProgressMeter m_progress;
  ULONGLONG m_length = 0;
  DWORD m_first_block_stamp = 0;
  int m_closed_blocks = 0;
  bool m_terminated = false;  // the chain led to its last, empty block
  CheckSummary m_summary;
};

class FindingCollector final : public CheckVisitor {
 public:
  explicit FindingCollector(RecordingCheck& check) : m_check(check) {}

  void OnFinding(const Finding& finding) override {
    if (m_check.findings.size() < RecordingCheck::kMostFindings) {
      m_check.findings.push_back(finding);
    } else {
      ++m_check.findings_left_out;
    }
  }

 private:
  RecordingCheck& m_check;
};

}  // namespace

CheckVisitor::~CheckVisitor() = default;
void CheckVisitor::OnHeader(const CZebFileInfo&) {}
void CheckVisitor::OnBlock(const CheckedBlock&) {}
void CheckVisitor::OnFrame(const CheckedFrame&) {}
void CheckVisitor::OnFinding(const Finding&) {}

CheckSummary CheckRecording(CFile& file, CheckVisitor& visitor, const ProgressCallback& progress) {
  return Checker(file, visitor, progress).Run();
}

RecordingCheck CheckRecording(const CString& path, const ProgressCallback& progress) {
  CFile file;
  OpenOrThrow(file, path, CFile::kModeRead | CFile::kShareDenyNone);
  RecordingCheck check;
  FindingCollector collector(check);
  check.summary = CheckRecording(file, collector, progress);
  return check;
}

}  // namespace zebx
