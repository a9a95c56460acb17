// The door's functions on the state of the display's surfaces as a whole.
#include "platform/noxdisplay/noxdisplay.h"
#include "platform/noxdisplay/software/display_library.h"

using namespace zebx::noxdisplay;

int noxshowIsLost() {
  DisplayLibrary& library = DisplayLibrary::Get();
  return library.Call(Function::kIsLost, [&] { return !library.IsLost(); });
}

int noxshowRestore() {
  DisplayLibrary& library = DisplayLibrary::Get();
  const auto restore = [&] {
    library.Restore();
    return true;
  };
  return library.Call(Function::kRestore, restore);
}
