// The zebx functions that change the masks of open cameras.
#include "capture/capture_app.h"
#include "capture/capture_camera.h"
#include "capture/zebx.h"

using namespace zebx;

int zebxAddMask(const tag_ZEBCAMERAID* id, CMaskInfo* mask) {
  CCaptureCamera* camera = GetCaptureApp().FindCamera(id);
  return camera == nullptr ? 0 : camera->AddMask(mask);
}

int zebxDeleteAllMask(const tag_ZEBCAMERAID* id) {
  CCaptureCamera* camera = GetCaptureApp().FindCamera(id);
  return camera == nullptr ? 0 : camera->DeleteAllMasks();
}
