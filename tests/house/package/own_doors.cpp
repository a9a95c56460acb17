// A host with one function of its own for each door: the library calls it instead of its own.
#include <dlfcn.h>
#include <zebx/zebx.h>

#include <cstdio>

int devices_asked = 0;
int surfaces_restored = 0;
int sound_devices_asked = 0;

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

UINT os::waveOutGetNumDevs() {
  return 2;
}

UINT os::waveOutOpen(HWAVEOUT*, UINT, const WaveFormat*, std::uintptr_t, std::uintptr_t, DWORD) {
  return ++sound_devices_asked;
}

int main() {
  const bool device = zebxInitZebx(0, nullptr, 0, nullptr, "") == 1 && devices_asked == 1;
  const bool display = zebxCheckDrawSurface() == 1 && surfaces_restored == 1;
  const bool sound = CWaveOut().Open(nullptr, 0) == 0 && sound_devices_asked == 2;
  const bool system = CZebFrameData().GetTimeStamp() == 4711;
  // Nothing in the library decodes: what it would find is what anybody finds.
  const bool codec = dlsym(RTLD_DEFAULT, "nxcDestroyHandle") == &nxcDestroyHandle;
  std::printf("device %d, display %d, sound %d, system %d, codec %d\n", device, display, sound,
              system, codec);
  return device && display && sound && system && codec ? 0 : 1;
}
