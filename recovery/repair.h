// Finishing the recordings that a crash or a power failure left unfinished. docs/recovery.md tells
// when a recorder calls it.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace zebx {

struct RepairedRecording {
  enum class Outcome {
    kWhole,      // there was nothing to do
    kFinished,   // it was unfinished and is whole now
    kInUse,      // somebody has it open, or may have: the disk does not say
    kEmpty,      // it has no frame yet
    kDamaged,    // it is more than unfinished: SalvageRecording saves what it can to a new file
    kProtected,  // its owner may not write it, or it is a link
    kFailed,     // it cannot be read, or the new file not written; `failure` says why
    kLeftOver,   // no recording: the temporary file of a recovery that was itself interrupted
  };
  static constexpr std::size_t kOutcomes = 8;

  CString path;
  Outcome outcome = Outcome::kWhole;
  CString failure;
  // Of kFinished.
  ULONGLONG frames = 0;         // in the recording
  ULONGLONG frames_gained = 0;  // of them, those that readers did not see before
  ULONGLONG dropped_bytes = 0;  // of a frame that was cut off
};

// A name for programs: "finished", "in-use".
ZEBX_API const char* NameOf(RepairedRecording::Outcome outcome);

// Is called before each recording with 0 bytes done, and during long ones. On the caller's own
// thread, with no lock held. False cancels.
using RepairCallback =
    std::function<bool(const CString& path, ULONGLONG done_bytes, ULONGLONG total_bytes)>;

// Makes an unfinished recording whole: every frame of it goes into a new file beside it, which
// takes its place once it is on the disk. At every moment, also after the power fails, the old or
// the new file is there, whole. Every other recording is left as it is, but for room reserved
// behind its end, which is given back when nobody has it open. While an unfinished recording is
// worked on, nobody else can open it. Nothing when the callback cancelled.
ZEBX_API std::optional<RepairedRecording> FinishRecording(const CString& path,
                                                          const RepairCallback& callback = {});

struct RepairReport {
  bool cancelled = false;
  std::array<ULONGLONG, RepairedRecording::kOutcomes> counts{};  // by outcome
  // The first kMostRecordings that are not kWhole.
  std::vector<RepairedRecording> recordings;
  ULONGLONG recordings_left_out = 0;
  ULONGLONG unread_directories = 0;

  static constexpr std::size_t kMostRecordings = 1000;

  ULONGLONG Count(RepairedRecording::Outcome outcome) const {
    return counts[static_cast<std::size_t>(outcome)];
  }
};

// The same for every recording (*.zebz) in a directory and below it; links are not followed. For a
// recorder's start, before it records: for a disk, its base directory, for a day, that day's.
ZEBX_API RepairReport FinishRecordings(const CString& directory,
                                       const RepairCallback& callback = {});

}  // namespace zebx
