#include "tools/zebtool/recording_scan.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/framework/byte_order.h"
#include "platform/framework/file.h"
#include "tools/zebtool/frame_signs.h"
#include "tools/zebtool/header_check.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

// Begin and end time are whole seconds of the wall clock, time stamps come from another clock.
constexpr LONGLONG kEndTimeSlackSeconds = 2;
// A wall clock that was set while recording explains less than this.
constexpr LONGLONG kEndTimeLimitSeconds = 24 * 60 * 60;
constexpr std::size_t kReservedAt = 10;  // in a block header

class Scanner {
 public:
  Scanner(CFile& file, ScanVisitor& visitor) : m_file(file), m_visitor(visitor) {}

  ScanSummary Run() {
    m_length = m_file.GetLength();
    m_summary.file_bytes = m_length;
    const HeaderCheck header = CheckHeader(m_file);
    for (const Finding& finding : header.findings) Report(finding);
    if (!header.readable) return m_summary;
    m_summary.has_header = true;
    m_visitor.OnHeader(header.info);
    FollowChain(header.first_block);
    CheckTimes(header.info);
    return m_summary;
  }

 private:
  void FollowChain(ULONGLONG offset) {
    DWORD previous = kNoBlock;
    while (const auto block = ReadBlock(offset, previous)) {
      if (block->header.m_next == kNoBlock) {
        ScanLastBlock(*block);
        return;
      }
      previous = static_cast<DWORD>(offset);
      if (!ScanClosedBlock(*block)) return;
      offset = block->header.m_next;
    }
  }

  std::optional<ScannedBlock> ReadBlock(ULONGLONG offset, DWORD previous) {
    std::array<BYTE, kBlockHeaderBytes> bytes{};
    m_file.Seek(offset);
    const std::size_t count = m_file.Read(bytes);
    if (count < bytes.size()) {
      Unfinished(offset, "unfinished: the file ends " +
                             (count == 0 ? "" : Plural(count, "byte") + " into ") +
                             "where the next block header should stand; 'zebtool salvage' makes "
                             "the recording whole");
      return std::nullopt;
    }
    const ScannedBlock block{m_summary.blocks++, offset, BlockHeader::Parse(bytes)};
    m_visitor.OnBlock(block);
    if (block.header.m_previous != previous) {
      Damage(offset, Name(block) + " points back to " + Link(block.header.m_previous) +
                         " and not to " + Link(previous));
    }
    if (ByteReader(std::span(bytes).subspan(kReservedAt)).Get<WORD>() != 0) {
      Damage(offset + kReservedAt, Name(block) + " has a reserved field that is not 0");
    }
    return block;
  }

  // False when the chain cannot be followed beyond the block.
  bool ScanClosedBlock(const ScannedBlock& block) {
    const ULONGLONG next = block.header.m_next;
    const ULONGLONG body = block.offset + kBlockHeaderBytes;
    if (next < body) {
      Damage(block.offset,
             Name(block) + " points " +
                 (next == block.offset ? "at itself" : "backwards, to " + FormatOffset(next)) +
                 "; the chain ends here");
      ScanFrames(block, m_length, true);
      return false;
    }
    if (block.header.m_frames == 0) {
      Damage(block.offset, Name(block) + " has no frames and yet a block behind it");
    }
    if (next > m_length) {
      const ULONGLONG end = ScanFrames(block, m_length, true);
      Damage(m_length, "the file is cut off inside " + Name(block) + ", which goes on to " +
                           FormatOffset(next) + "; " +
                           Plural(m_length - std::min(end, m_length), "byte") +
                           " at the end are no whole frame; 'zebtool salvage' makes it whole");
      return false;
    }
    const ULONGLONG end = ScanFrames(block, next, true);
    if (end < next) {
      Damage(end, Plural(next - end, "byte") + " are left over between the last frame of " +
                      Name(block) + " and the next block");
    }
    return true;
  }

  void ScanLastBlock(const ScannedBlock& block) {
    const ULONGLONG body = block.offset + kBlockHeaderBytes;
    if (block.header.m_frames > 0) {
      const ULONGLONG end = ScanFrames(block, m_length, true);
      Damage(block.offset, Name(block) + " has frames but no block behind it");
      if (end < m_length) Damage(end, Plural(m_length - end, "byte") + " behind the last frame");
      return;
    }
    if (body == m_length) {
      m_terminated = block.number > 0;
      if (!m_terminated) Unfinished(block.offset, "the recording holds no frame yet");
      return;
    }
    ScanUnfinished(block, body);
  }

  // Only the writer's death leaves frames behind an empty block header.
  void ScanUnfinished(const ScannedBlock& block, ULONGLONG body) {
    const ULONGLONG before = m_summary.frames;
    const ULONGLONG end = ScanFrames(block, m_length, false);
    const ULONGLONG frames = m_summary.frames - before;
    const auto next = FrameAt(end);
    const bool cut_frame =
        m_length - end < kVoicedFrameHeaderBytes || (next && LooksLikeFrame(*next));
    if (frames == 0 && !cut_frame) {
      Damage(body, Plural(m_length - body, "byte") + " behind the last block that are no frames");
      return;
    }
    Unfinished(block.offset,
               "unfinished: the last block was never closed, its writer died or is "
               "still writing; it holds " +
                   Plural(frames, "whole frame") +
                   (end < m_length ? " and " + Plural(m_length - end, "byte") +
                                         (cut_frame ? " of another" : " that are no frame")
                                   : "") +
                   "; 'zebtool salvage' makes the recording whole");
  }

  // Walks the frames of a block up to `limit` and returns where they end.
  ULONGLONG ScanFrames(const ScannedBlock& block, ULONGLONG limit, bool finished) {
    ULONGLONG offset = block.offset + kBlockHeaderBytes;
    for (int index = 0; !finished || index < block.header.m_frames; ++index) {
      if (!finished && offset == limit) break;
      const auto header = FrameAt(offset);
      const bool whole = header && offset + header->TotalBytes() <= limit;
      if (!whole || (!finished && !LooksLikeFrame(*header))) {
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

  void ReportBrokenFrame(const ScannedBlock& block, int index, ULONGLONG offset,
                         const std::optional<FrameHeader>& header, ULONGLONG limit) {
    const std::string frame = "frame " + std::to_string(index) + " of " + Name(block);
    if (offset >= limit || !header) {
      Damage(offset,
             frame + " is missing: the header counts " + Plural(block.header.m_frames, "frame"));
    } else {
      Damage(offset, frame + " takes " + Plural(header->TotalBytes(), "byte") + ", but only " +
                         FormatCount(limit - offset) + " are left in its block");
    }
  }

  void CheckFrame(const ScannedBlock& block, const ScannedFrame& frame) {
    const FrameHeader& header = frame.header;
    const std::string name = "frame " + std::to_string(frame.index) + " of " + Name(block);
    const bool first_of_file = m_summary.frames == 0;
    if (first_of_file) m_summary.first_stamp = header.m_time_stamp;
    const DWORD before = m_summary.last_stamp;
    Count(frame);
    m_visitor.OnFrame(frame);
    if (!first_of_file && static_cast<LONG>(header.m_time_stamp - before) < 0) {
      Damage(frame.offset, name + " is stamped " + FormatCount(before - header.m_time_stamp) +
                               " ms before the frame ahead of it");
    }
    if (frame.index > 0) return;
    if (!header.IsIFrame())
      Damage(frame.offset, name + " is no I-frame, so the block cannot be decoded from its start");
    ++m_summary.blocks_with_frames;
    if (block.number == 0) m_first_block_stamp = block.header.m_time_stamp;
    if (!frame.finished || block.header.m_time_stamp == header.m_time_stamp) return;
    const std::string text = Name(block) + " is stamped " +
                             std::to_string(block.header.m_time_stamp) + ", its first frame " +
                             std::to_string(header.m_time_stamp);
    if (block.number == 0) {
      // A file of prepared blocks keeps the stamp of its creation there, and its clips inherit it.
      Note(block.offset, text + " (normal for files of prepared blocks)");
    } else {
      Damage(block.offset, text);
    }
  }

  void Count(const ScannedFrame& frame) {
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
    if (info.GetEndTime() < info.GetBeginTime()) {
      Damage(kEndTimeAt, "the end time " + FormatTime(info.GetEndTime()) +
                             " is before the begin time " + FormatTime(info.GetBeginTime()));
      return;
    }
    const DWORD begin_stamp = info.GetBeginTimeStamp();
    if (begin_stamp != m_summary.first_stamp) {
      const std::string text = "the header's begin time stamp is " + std::to_string(begin_stamp) +
                               ", the first frame's " + std::to_string(m_summary.first_stamp);
      if (begin_stamp == m_first_block_stamp) {
        Note(kBeginTimeStampAt, text + " (normal for clips of files of prepared blocks)");
      } else {
        Damage(kBeginTimeStampAt, text);
      }
      return;
    }
    if (!m_terminated) return;  // the end time is that of the whole recording
    const CTime by_stamps = info.GetTime(m_summary.last_stamp);
    const LONGLONG late = LONGLONG{info.GetEndTime().GetTime()} - by_stamps.GetTime();
    if (late > -kEndTimeSlackSeconds && late < kEndTimeSlackSeconds) return;
    const std::string text = "the end time is " + FormatTime(info.GetEndTime()) +
                             ", by the last frame's stamp it is " + FormatTime(by_stamps);
    if (late < -kEndTimeLimitSeconds || late > kEndTimeLimitSeconds) {
      Damage(kEndTimeAt, text);
    } else {
      Note(kEndTimeAt,
           text + " (normal for frames from before an alarm, and when the clock was set)");
    }
  }

  static std::string Name(const ScannedBlock& block) {
    return "block " + std::to_string(block.number);
  }
  static std::string Link(DWORD offset) {
    return offset == kNoBlock ? "no block" : FormatOffset(offset);
  }

  void Note(ULONGLONG offset, std::string text) {
    Report({Finding::Kind::kNote, offset, std::move(text)});
  }
  void Damage(ULONGLONG offset, std::string text) {
    Report({Finding::Kind::kDamage, offset, std::move(text)});
  }
  void Unfinished(ULONGLONG offset, std::string text) {
    Report({Finding::Kind::kUnfinished, offset, std::move(text)});
  }
  void Report(const Finding& finding) {
    if (finding.kind == Finding::Kind::kNote) ++m_summary.notes;
    if (finding.kind == Finding::Kind::kDamage) ++m_summary.damages;
    if (finding.kind == Finding::Kind::kUnfinished) m_summary.unfinished = true;
    m_visitor.OnFinding(finding);
  }

  CFile& m_file;
  ScanVisitor& m_visitor;
  ULONGLONG m_length = 0;
  DWORD m_first_block_stamp = 0;
  bool m_terminated = false;  // the chain led to its last, empty block
  ScanSummary m_summary;
};

}  // namespace

ScanSummary ScanRecording(CFile& file, ScanVisitor& visitor) {
  return Scanner(file, visitor).Run();
}

}  // namespace zebtool
