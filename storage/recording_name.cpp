#include "storage/recording_name.h"

#include <cstdio>

namespace zebx {
namespace {

// Board and camera in at least two digits each, and the begin time.
CString NameOf(const char* prefix, const CZebFileInfo& info) {
  const tag_ZEBCAMERAID camera = info.GetCameraID();
  char numbers[16];
  static_cast<void>(
      std::snprintf(numbers, sizeof(numbers), "%2.2d%2.2d", camera.m_board, camera.m_camera));
  return CString(prefix) + numbers + info.GetBeginTime().Format("%y%m%d%H%M%S") + ".zebz";
}

}  // namespace

CString RecordingName(const CZebFileInfo& info) {
  return NameOf(info.IsClip() != 0 ? "cc" : "c", info);
}

CString AlarmRecordingName(const CZebFileInfo& info) {
  return NameOf("ca", info);
}

}  // namespace zebx
