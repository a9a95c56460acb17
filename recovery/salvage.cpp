#include "recovery/salvage.h"

#include <optional>

#include "platform/framework/file.h"
#include "record/zeb_frame_data.h"
#include "recovery/header_recovery.h"
#include "recovery/open_or_throw.h"
#include "recovery/salvage_output.h"
#include "recovery/salvager.h"
#include "recovery/stamp_order.h"

namespace zebx {
namespace {

using Result = SalvageReport::Result;

template <typename Detail>
void AddDetail(std::vector<Detail>& details, ULONGLONG& count, const Detail& detail) {
  ++count;
  if (details.size() < SalvageReport::kMostDetails) details.push_back(detail);
}

class Salvager {
 public:
  Salvager(CFile& file, const CString& output, bool replace, const ProgressCallback& progress,
           const SalvageJudge& judge)
      : m_file(file),
        m_judge(judge),
        m_callback(progress),
        m_progress([this](ULONGLONG done, ULONGLONG total) {
          m_cancelled = m_callback && !m_callback(done, total);
          return !m_cancelled;
        }),
        m_header(RecoverFrom(file)),
        m_output(m_header.info, output, replace) {}

  SalvageReport Run() {
    m_report.damaged_bytes = m_file.GetLength();
    m_report.header_remarks = m_header.remarks;
    try {
      m_report.result = Conclude(SaveFrames());
    } catch (...) {
      m_output.Discard();
      throw;
    }
    if (m_report.result == Result::kNotWritten || m_report.result == Result::kExists) {
      m_report.failure = m_output.Failure();
    }
    m_report.files = m_output.Files();
    return std::move(m_report);
  }

 private:
  RecoveredHeader RecoverFrom(CFile& file) {
    ProgressMeter meter(m_progress);
    RecordingBytes bytes(file, meter);
    return RecoverHeader(file, bytes);
  }

  // False when the output cannot be written.
  bool SaveFrames() {
    FrameFinder finder(
        m_file, [this](const Hole& hole) { AddHole(hole); }, m_progress,
        m_header.first_block.offset, m_header.first_block.at_block);
    StampOrder order([&] { return finder.Next(); });
    while (!m_cancelled) {
      const auto frame = order.Next();
      if (!frame) break;
      if (!Save(*frame)) return false;
    }
    return true;
  }

  Result Conclude(bool is_written) {
    if (m_cancelled) {
      m_output.Discard();
      return Result::kCancelled;
    }
    if (!is_written) {
      if (m_output.IsInTheWay()) {
        m_output.Discard();
        return Result::kExists;
      }
      m_output.Abandon();
      return Result::kNotWritten;
    }
    if (m_output.Files().empty()) return Result::kNothingToSave;
    if (!m_output.CloseFile()) return Result::kNotWritten;
    m_report.files = m_output.Files();
    if (m_judge && !m_judge(m_report)) {
      m_output.Discard();
      return Result::kCancelled;
    }
    return m_output.GiveNames() ? Result::kSaved : Result::kNotWritten;
  }

  // False when the output cannot be written.
  bool Save(const OrderedFrame& ordered) {
    const FoundFrame& found = ordered.frame;
    if (!ReadFrame(found)) {
      AddHole({found.offset, found.offset + found.header.TotalBytes()});
      return true;
    }
    if (ordered.begins_file) m_output.EndFile();
    switch (m_output.Append(m_frame, BeginTimeOf(m_header, found.header.m_time_stamp))) {
      case SalvageOutput::Answer::kFailed:
        return false;
      case SalvageOutput::Answer::kWantsIFrame:
        ++m_report.lost_frames;
        m_report.lost_frame_bytes += found.header.TotalBytes();
        return true;
      case SalvageOutput::Answer::kWritten:
        break;
    }
    ++m_report.frames;
    m_report.frame_bytes += found.header.TotalBytes();
    if (found.is_restored) AddRestored({found.offset, RestoredFrame::What::kHeader});
    if (ordered.is_stamp_restored) AddRestored({found.offset, RestoredFrame::What::kTimeStamp});
    return true;
  }

  // The frame as the header says, which may not be as it stands in the file.
  bool ReadFrame(const FoundFrame& found) {
    const FrameHeader& header = found.header;
    m_frame.Reserve(header);
    m_frame.SetFrameType(header.m_type);
    m_frame.SetFlag(header.m_flags);
    m_frame.SetTimeStamp(header.m_time_stamp);
    m_frame.SetVideoLength(header.m_video_bytes);
    m_frame.SetSpeechDataLen(header.m_speech_bytes);
    m_file.Seek(found.offset + header.HeaderBytes());
    return m_file.Read({m_frame.GetVideoBuf(), header.m_video_bytes}) == header.m_video_bytes &&
           m_file.Read({m_frame.GetSpeechBuf(), header.m_speech_bytes}) == header.m_speech_bytes;
  }

  void AddHole(const Hole& hole) {
    m_report.hole_bytes += hole.end - hole.begin;
    AddDetail(m_report.holes, m_report.hole_count, hole);
  }
  void AddRestored(const RestoredFrame& restored) {
    AddDetail(m_report.restored, m_report.restored_count, restored);
  }

  CFile& m_file;
  const SalvageJudge& m_judge;
  const ProgressCallback& m_callback;
  bool m_cancelled = false;
  ProgressCallback m_progress;
  RecoveredHeader m_header;
  SalvageOutput m_output;
  CZebFrameData m_frame;
  SalvageReport m_report;
};

}  // namespace

SalvageReport SalvageJudged(CFile& damaged, const CString& output, bool replace,
                            const ProgressCallback& progress, const SalvageJudge& judge) {
  return Salvager(damaged, output, replace, progress, judge).Run();
}

SalvageReport SalvageRecording(CFile& damaged, const CString& output, bool replace,
                               const ProgressCallback& progress) {
  return SalvageJudged(damaged, output, replace, progress, {});
}

SalvageReport SalvageRecording(const CString& damaged, const CString& output, bool replace,
                               const ProgressCallback& progress) {
  CFile file;
  OpenOrThrow(file, damaged, CFile::kModeRead | CFile::kShareDenyNone);
  return SalvageRecording(file, output, replace, progress);
}

}  // namespace zebx
