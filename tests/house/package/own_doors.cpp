// A host with one function of its own for each door: the library calls it instead of its own.
#include <dlfcn.h>
#include <zebx/zebx.h>

#include <cstdio>

int devices_asked = 0;
int surfaces_restored = 0;

int noxdevGetDeviceNum(DWORD* count) {
  *count = 0;
  return devices_asked++;
}

int noxshowIsLost() {
  return 1;
}

int noxshowRestore() {
  return surfaces_restored++;
}

int nxcDestroyHandle(NxcHandle) {
  return 4711;
}

DWORD os::GetTickCount() {
  return 4711;
}

int main() {
  const bool device = zebxInitZebx(0, nullptr, 0, nullptr, "") == 1 && devices_asked == 1;
  const bool display = zebxCheckDrawSurface() == 1 && surfaces_restored == 1;
  const bool system = CZebFrameData().GetTimeStamp() == 4711;
  // Nothing in the library decodes: what it would find is what anybody finds.
  const bool codec = dlsym(RTLD_DEFAULT, "nxcDestroyHandle") == &nxcDestroyHandle;
  std::printf("device %d, display %d, system %d, codec %d\n", device, display, system, codec);
  return device && display && system && codec ? 0 : 1;
}
