// The zebx functions of cameras: opened, closed, set up anew, and asked for pictures and frames.
#include "capture/capture_app.h"
#include "capture/capture_board.h"
#include "capture/capture_camera.h"
#include "capture/zebx.h"

using namespace zebx;

namespace {

CCaptureCamera* FindCamera(const tag_ZEBCAMERAID* id) {
  return GetCaptureApp().FindCamera(id);
}

}  // namespace

int zebxCreateCamera(const tag_ZEBCAMERAID* id, CShowParam* show) {
  CCaptureCamera* camera = FindCamera(id);
  return camera == nullptr ? 0 : camera->SetShowParam(show);
}

int zebxDestroyCamera(const tag_ZEBCAMERAID* id) {
  CCaptureCamera* camera = FindCamera(id);
  return camera == nullptr ? 0 : camera->Destroy();
}

int zebxOpenCamera(const tag_ZEBCAMERAID* id, DWORD, const CEncodeParam* settings,
                   const CMaskList* masks, const CVideoColor* color, CShowParam* show) {
  CCaptureCamera* camera = FindCamera(id);
  return camera == nullptr ? 0 : camera->Open(settings, masks, color, show);
}

int zebxCloseCamera(const tag_ZEBCAMERAID* id) {
  CCaptureCamera* camera = FindCamera(id);
  return camera == nullptr ? 0 : camera->Close();
}

int zebxIsCameraOpen(const tag_ZEBCAMERAID* id) {
  const CCaptureCamera* camera = FindCamera(id);
  return camera != nullptr && camera->IsOpen() ? 1 : 0;
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
  CCaptureCamera* camera = settings == nullptr ? nullptr : FindCamera(id);
  return camera == nullptr ? 0 : camera->RequestNextFrame(*settings, request_bits);
}

int zebxGetPicture(const tag_ZEBCAMERAID* id, CImage* image) {
  const CCaptureCamera* camera = FindCamera(id);
  return camera == nullptr ? 0 : camera->GetPicture(image);
}

int zebxGetAlarmData(const tag_ZEBCAMERAID* id, CZebFile* file) {
  const CCaptureCamera* camera = FindCamera(id);
  return camera == nullptr ? 0 : camera->GetAlarmData(file);
}
