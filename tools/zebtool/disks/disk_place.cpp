#include "tools/zebtool/disks/disk_place.h"

#include <utility>

#include "tools/zebtool/console/console.h"
#include "tools/zebtool/disks/new_recording.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr ULONGLONG kLookEveryMs = 5000;
constexpr ULONGLONG kMsPerMinute = 60000;

}  // namespace

std::unique_ptr<CZebFile> DiskPlace::Create(CZebFileInfo& header, std::size_t) {
  MakeRoom();
  const RecordingKind kind = m_plan.alarm ? RecordingKind::kAlarm : RecordingKind::kVideo;
  if (const auto path = ExistingRecording(m_database, header, kind)) {
    throw JobError("'" + *path + "' is there already; give another --begin or --camera");
  }
  auto file = CreateRecording(m_database, header, kind);
  m_file_begin_ms = m_last_look_ms = m_elapsed_ms;
  return file;
}

std::string DiskPlace::Close(std::unique_ptr<CZebFile> file, bool) {
  return FinishRecording(std::move(file));
}

bool DiskPlace::IsFileDue(ULONGLONG elapsed_ms) {
  m_elapsed_ms = elapsed_ms;
  if (m_plan.minutes != 0 && elapsed_ms - m_file_begin_ms >= m_plan.minutes * kMsPerMinute) {
    return true;
  }
  if (elapsed_ms - m_last_look_ms < kLookEveryMs) return false;
  m_last_look_ms = elapsed_ms;
  return IsWorkingDiskShort();
}

}  // namespace zebtool
