#include "tools/zebtool/store_recycle.h"

#include <limits>

#include "platform/framework/file_find.h"

namespace zebtool {
namespace {

constexpr char kDayDirectory[] = "d%Y%m%d";
constexpr DWORD kUnknownMb = std::numeric_limits<DWORD>::max();

// A disk in the course of recycling.
struct Candidate {
  const CHddObj* disk;
  DWORD free_mb;
  DWORD cursor;  // days up to here have had their turn
};

ULONGLONG BytesBelow(const CString& directory) {
  ULONGLONG bytes = 0;
  std::vector<CString> waiting = {directory};
  while (!waiting.empty()) {
    const CString pattern = waiting.back() + "\\*.*";
    waiting.pop_back();
    CFileFind finder;
    int more = finder.FindFile(pattern);
    while (more != 0) {
      more = finder.FindNextFile();
      if (finder.IsDots()) continue;
      if (finder.IsDirectory()) {
        waiting.push_back(finder.GetFilePath());
      } else {
        bytes += finder.GetLength();
      }
    }
  }
  return bytes;
}

// In the library's order: a disk that led for a while has had its turn, although the day of a later
// one was older.
Candidate* TakeOldestDay(std::vector<Candidate>& candidates, DWORD today, DWORD& oldest) {
  Candidate* taken = nullptr;
  oldest = today;
  for (Candidate& candidate : candidates) {
    DWORD date = 0;
    if (candidate.disk->IsRecycle() != 0 &&
        candidate.disk->FindOldestDir(date, candidate.cursor) != 0 && date < oldest) {
      taken = &candidate;
      oldest = candidate.cursor = date;
    }
  }
  return taken;
}

}  // namespace

RecyclingForecast ForecastRecycling(const std::vector<CHddObj*>& disks, CTime now) {
  std::vector<Candidate> candidates;
  for (const CHddObj* disk : disks) {
    DWORD total_mb = 0;
    DWORD used_mb = 0;
    DWORD free_mb = kUnknownMb;
    const bool answers = disk->GetHDDSpace(total_mb, used_mb, free_mb) != 0;
    if (answers && free_mb > disk->GetAlarmSpace()) return {{}, disk};
    candidates.push_back({disk, answers ? free_mb : kUnknownMb, 0});
  }
  RecyclingForecast forecast;
  const DWORD today = CTime(now.GetYear(), now.GetMonth(), now.GetDay(), 0, 0, 0).GetTime();
  DWORD date = 0;
  while (Candidate* candidate = TakeOldestDay(candidates, today, date)) {
    const CTime day(date);
    const ULONGLONG bytes = BytesBelow(candidate->disk->GetBaseDir() + day.Format(kDayDirectory));
    forecast.days.push_back({candidate->disk, day, bytes});
    if (candidate->free_mb != kUnknownMb) candidate->free_mb += static_cast<DWORD>(bytes);
    if (candidate->free_mb > candidate->disk->GetReservedSpace()) {
      forecast.working_disk = candidate->disk;
      break;
    }
  }
  return forecast;
}

}  // namespace zebtool
