#include "recovery/repair.h"

#include <array>
#include <utility>

#include "platform/framework/directory_listing.h"
#include "platform/framework/file.h"
#include "platform/framework/file_system.h"
#include "platform/framework/letter_case.h"
#include "platform/framework/tree_walk.h"
#include "record/block_format.h"
#include "record/zeb_file_info.h"
#include "recovery/open_or_throw.h"
#include "recovery/recording_check.h"
#include "recovery/salvager.h"
#include "recovery/temporary_file.h"

namespace zebx {
namespace {

using Outcome = RepairedRecording::Outcome;

// Whether the chain leads to a terminating block at the very end of the file. Reads one header a
// block, so that a disk full of whole recordings is soon looked through.
bool IsClosed(CFile& file) {
  CZebFileInfo info;
  if (info.ReadFrom(file) == 0) return false;
  const ULONGLONG length = file.GetLength();
  ULONGLONG offset = info.GetSize();
  while (true) {
    std::array<BYTE, kBlockHeaderBytes> bytes;
    file.Seek(offset);
    if (file.Read(bytes) < bytes.size()) return false;
    const BlockHeader block = BlockHeader::Parse(bytes);
    const bool is_last = block.m_next == kNoBlock && block.m_frames == 0;
    if (is_last) return block.m_previous != kNoBlock && offset + kBlockHeaderBytes == length;
    if (block.m_next <= offset) return false;
    offset = block.m_next;
  }
}

class Repair {
 public:
  Repair(const CString& path, const RepairCallback& callback) : m_callback(callback) {
    m_result.path = path;
  }

  std::optional<RepairedRecording> Run() {
    if (!Pass(0, 0)) return std::nullopt;
    try {
      m_result.outcome = Look();
    } catch (const std::exception& failure) {
      m_result.outcome = Outcome::kFailed;
      m_result.failure = failure.what();
    }
    if (m_cancelled) return std::nullopt;
    return std::move(m_result);
  }

 private:
  Outcome Look() {
    const auto status = CurrentFileSystem().LinkStatus(m_result.path);
    if (!status) throw CFileException(CFileException::Cause::kGeneric, 0, m_result.path);
    if (status->m_is_link || status->m_is_read_only) return Outcome::kProtected;
    {
      CFile file;
      OpenOrThrow(file, m_result.path, CFile::kModeRead | CFile::kShareDenyNone);
      if (IsClosed(file)) return Outcome::kWhole;
    }
    CFile file;
    try {
      OpenOrThrow(file, m_result.path, CFile::kModeReadWrite | CFile::kShareExclusive);
    } catch (const CFileException& failure) {
      if (failure.GetCause() == CFileException::Cause::kSharingViolation) return Outcome::kInUse;
      throw;
    }
    if (!file.IsAlone()) return Outcome::kInUse;
    const Outcome outcome = Finish(file);
    if (outcome != Outcome::kFinished) GiveBackReserve(file);
    return outcome;
  }

  static void GiveBackReserve(CFile& file) {
    try {
      file.GiveBackReserve();
    } catch (const CFileException&) {
      // It is room on the disk, and no byte of the file.
    }
  }

  // `file` is open for us alone until the new one has its place.
  Outcome Finish(CFile& file) {
    CheckVisitor nothing;
    const auto progress = [this](ULONGLONG done, ULONGLONG total) { return Pass(done, total); };
    const CheckSummary summary = CheckRecording(file, nothing, progress);
    if (summary.cancelled || summary.IsWhole()) return Outcome::kWhole;
    if (!summary.has_header || summary.damages > 0) return Outcome::kDamaged;
    if (summary.frames == 0) return Outcome::kEmpty;

    bool is_faithful = false;
    const SalvageReport report =
        SalvageJudged(file, m_result.path, true, progress, [&](const SalvageReport& made) {
          is_faithful = made.files.size() == 1 && made.frames == summary.frames &&
                        made.restored_count == 0 &&
                        CheckRecording(made.files[0].path).summary.IsWhole();
          return is_faithful;
        });
    if (report.result == SalvageReport::Result::kSaved) {
      m_result.frames = report.frames;
      m_result.frames_gained = summary.frames - summary.finished_frames;
      m_result.dropped_bytes = report.hole_bytes;
      return Outcome::kFinished;
    }
    // What it made itself; the recording is as it was.
    for (const SalvagedFile& made : report.files) {
      CurrentFileSystem().DeleteFile(made.path, nullptr);
    }
    m_result.failure = report.failure;
    return is_faithful || !report.failure.empty() ? Outcome::kFailed : Outcome::kDamaged;
  }

  bool Pass(ULONGLONG done, ULONGLONG total) {
    m_cancelled = m_cancelled || (m_callback && !m_callback(m_result.path, done, total));
    return !m_cancelled;
  }

  const RepairCallback& m_callback;
  RepairedRecording m_result;
  bool m_cancelled = false;
};

bool EndsWith(const CString& path, std::string_view extension) {
  return path.size() >= extension.size() &&
         EqualsIgnoringCase(std::string_view{path}.substr(path.size() - extension.size()),
                            extension);
}

class TreeRepair final : public TreeVisitor {
 public:
  explicit TreeRepair(const RepairCallback& callback) : m_callback(callback) {}

  bool VisitFile(const CString& path) override {
    if (IsTemporaryName(path)) {
      Add({path, Outcome::kLeftOver, {}, 0, 0, 0});
    } else if (EndsWith(path, ".zebz")) {
      auto repaired = FinishRecording(path, m_callback);
      m_report.cancelled = !repaired;
      if (repaired) Add(std::move(*repaired));
    }
    return !m_report.cancelled;
  }
  bool PassOverUnreadable(const CString&) override {
    ++m_report.unread_directories;
    return true;
  }

  RepairReport TakeReport() { return std::move(m_report); }

 private:
  void Add(RepairedRecording repaired) {
    ++m_report.counts[static_cast<std::size_t>(repaired.outcome)];
    if (repaired.outcome == Outcome::kWhole) return;
    if (m_report.recordings.size() < RepairReport::kMostRecordings) {
      m_report.recordings.push_back(std::move(repaired));
    } else {
      ++m_report.recordings_left_out;
    }
  }

  const RepairCallback& m_callback;
  RepairReport m_report;
};

}  // namespace

const char* NameOf(RepairedRecording::Outcome outcome) {
  // In the order of the enumeration.
  static constexpr std::array<const char*, RepairedRecording::kOutcomes> kNames = {
      "whole", "finished", "in-use", "empty", "damaged", "protected", "failed", "left-over"};
  return kNames[static_cast<std::size_t>(outcome)];
}

std::optional<RepairedRecording> FinishRecording(const CString& path,
                                                 const RepairCallback& callback) {
  return Repair(path, callback).Run();
}

RepairReport FinishRecordings(const CString& directory, const RepairCallback& callback) {
  TreeRepair repair(callback);
  FileSystem& file_system = CurrentFileSystem();
  const auto root = file_system.RealPath(directory);
  if (!root) {
    repair.PassOverUnreadable(directory);
  } else {
    WalkTree(file_system, *root, repair);
  }
  return repair.TakeReport();
}

}  // namespace zebx
