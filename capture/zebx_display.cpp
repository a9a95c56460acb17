// The zebx functions that reach the display library: the watermark's picture and lost surfaces.
#include "capture/capture_app.h"
#include "capture/zebx.h"
#include "image/dib_obj.h"
#include "platform/noxdisplay/noxdisplay.h"

using namespace zebx;

int zebxSetWaterMark(const CDibObj* picture) {
  if (picture == nullptr) return 0;
  const DWORD width = picture->GetWidth();
  const DWORD height = picture->GetHeight();
  const DWORD bytes = picture->GetWidthBytes() * height;
  return noxshowSetWatermark(picture->GetData(), bytes, width, height) == 0 ? 1 : 0;
}

int zebxCheckDrawSurface() {
  if (noxshowIsLost() == 0) return 0;
  noxshowRestore();
  GetCaptureApp().RestoreDevices();
  return 1;
}
