// The state of the display's surfaces as a whole.
#include <atomic>

#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/software/display_control.h"

namespace {

std::atomic<bool> surfaces_lost = false;

}  // namespace

namespace zebx::noxdisplay {

void LoseSurfaces() {
  surfaces_lost = true;
}

}  // namespace zebx::noxdisplay

int noxshowIsLost() {
  return surfaces_lost ? 1 : 0;
}

int noxshowRestore() {
  surfaces_lost = false;
  return 0;
}
