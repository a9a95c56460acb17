// The zebx functions of cameras: opened, closed, set up anew, and asked for pictures and frames.
#include "capture/capture_app.h"
#include "capture/capture_board.h"
#include "capture/capture_camera.h"
#include "capture/guarded.h"
#include "capture/zebx.h"

using namespace zebx;

namespace {

// Runs the action on the camera; 0 without such a camera and when an exception ends it.
template <typename Action>
int OnCamera(const tag_ZEBCAMERAID* id, const Action& action) {
  const auto camera = GetCaptureApp().FindCamera(id);
  return camera == nullptr ? 0 : Guarded([&] { return action(*camera); });
}

}  // namespace

int zebxCreateCamera(const tag_ZEBCAMERAID* id, CShowParam* show) {
  return OnCamera(id, [&](CCaptureCamera& camera) { return camera.SetShowParam(show); });
}

int zebxDestroyCamera(const tag_ZEBCAMERAID* id) {
  return OnCamera(id, [](CCaptureCamera& camera) { return camera.Destroy(); });
}

int zebxOpenCamera(const tag_ZEBCAMERAID* id, DWORD, const CEncodeParam* settings,
                   const CMaskList* masks, const CVideoColor* color, CShowParam* show) {
  return OnCamera(
      id, [&](CCaptureCamera& camera) { return camera.Open(settings, masks, color, show); });
}

int zebxCloseCamera(const tag_ZEBCAMERAID* id) {
  return OnCamera(id, [](CCaptureCamera& camera) { return camera.Close(); });
}

int zebxIsCameraOpen(const tag_ZEBCAMERAID* id) {
  return OnCamera(id, [](const CCaptureCamera& camera) { return camera.IsOpen() ? 1 : 0; });
}

int zebxIsWork() {
  const CCaptureApp& app = GetCaptureApp();
  for (DWORD board = 0; board < app.GetBoardCount(); ++board) {
    const CCaptureBoard* found = app.FindBoard(board);
    if (found != nullptr && found->IsAnyCameraOpen()) return 1;
  }
  return 0;
}

int zebxRequestNextFrame(const tag_ZEBCAMERAID* id, const CEncodeParam* settings,
                         DWORD request_bits) {
  if (settings == nullptr) return 0;
  return OnCamera(
      id, [&](CCaptureCamera& camera) { return camera.RequestNextFrame(*settings, request_bits); });
}

int zebxGetPicture(const tag_ZEBCAMERAID* id, CImage* image) {
  return OnCamera(id, [&](const CCaptureCamera& camera) { return camera.GetPicture(image); });
}

int zebxGetAlarmData(const tag_ZEBCAMERAID* id, CZebFile* file) {
  return OnCamera(id, [&](const CCaptureCamera& camera) { return camera.GetAlarmData(file); });
}

int zebxAddMask(const tag_ZEBCAMERAID* id, CMaskInfo* mask) {
  return OnCamera(id, [&](CCaptureCamera& camera) { return camera.AddMask(mask); });
}

int zebxDeleteAllMask(const tag_ZEBCAMERAID* id) {
  return OnCamera(id, [](CCaptureCamera& camera) { return camera.DeleteAllMasks(); });
}

int zebxSetVideoColor(const tag_ZEBCAMERAID* id, const CVideoColor* color) {
  if (color == nullptr) return 0;
  return OnCamera(id, [&](const CCaptureCamera& camera) { return camera.SetColor(*color); });
}

int zebxGetVideoColor(const tag_ZEBCAMERAID* id, CVideoColor* color) {
  if (color == nullptr) return 0;
  return OnCamera(id, [&](const CCaptureCamera& camera) { return camera.GetColor(*color); });
}

int zebxSetShowType(const tag_ZEBCAMERAID* id, DWORD show_type) {
  return OnCamera(id, [&](CCaptureCamera& camera) { return camera.SetShowType(show_type); });
}
