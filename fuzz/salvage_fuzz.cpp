// Arbitrary bytes as a damaged recording: they are checked and salvaged within the memory they
// have, and what salvage writes is whole.
#include <cstdlib>

#include "fuzz/sparse_disk.h"
#include "recovery/recording_check.h"
#include "recovery/repair.h"
#include "recovery/salvage.h"
#include "tests/support/recording_fixture.h"

namespace {

void Demand(bool condition) {
  if (!condition) std::abort();
}

void Salvage(MemoryFileSystem& disk, const std::string& bytes) {
  disk.Put("r.zebz", bytes);
  zebx::CheckRecording("r.zebz");
  const zebx::SalvageReport report = zebx::SalvageRecording("r.zebz", "saved", true);
  ULONGLONG frames = 0;
  for (const auto& file : report.files) {
    const zebx::RecordingCheck check = zebx::CheckRecording(file.path);
    Demand(file.finished && check.summary.IsWhole());
    frames += check.summary.frames;
  }
  Demand(frames == report.frames && report.frame_bytes + report.hole_bytes <= bytes.size());
  Demand(disk.Get("r.zebz") == bytes);
  const auto repaired = zebx::FinishRecording("r.zebz");
  const bool is_finished = repaired->outcome == zebx::RepairedRecording::Outcome::kFinished;
  Demand(is_finished ? zebx::CheckRecording("r.zebz").summary.IsWhole()
                     : disk.Get("r.zebz") == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  SparseDisk disk;
  // Every byte of a gap is looked at.
  constexpr ULONGLONG kGapBytes = 1 << 15;
  const SparseBytes input = SparseBytes::Of({data, size}, kGapBytes);
  if (input.m_gap_bytes != 0) {
    disk.PutSparse("r.zebz", input);
    zebx::CheckRecording("r.zebz");
    zebx::SalvageRecording("r.zebz", "saved", true);
    return 0;
  }
  Salvage(disk, input.m_bytes);
  // Behind a good header, so that the chain is reached without guessing one.
  Salvage(disk, RawRecording({}) + input.m_bytes);
  return 0;
}
