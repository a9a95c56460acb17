// The device functions of zebdev.h over the virtual devices. Leaving out this file alone leaves
// room for another device library.
#include "platform/zebdev/software/virtual_device_library.h"
#include "platform/zebdev/zebdev.h"

using namespace zebx;

using zebdev::VirtualDeviceLibrary;

int noxdevInitialize(DWORD start_up_word, DWORD reserved) {
  return VirtualDeviceLibrary::Instance().Initialize(start_up_word, reserved);
}

int noxdevInvalidate() {
  return VirtualDeviceLibrary::Instance().Invalidate();
}

int noxdevGetDeviceNum(DWORD* count) {
  return VirtualDeviceLibrary::Instance().GetDeviceNum(count);
}

int noxdevCreateDevice(NoxdevHandle* device, DWORD number) {
  return VirtualDeviceLibrary::Instance().CreateDevice(device, number);
}

int noxdevDestroyDevice(NoxdevHandle device) {
  return VirtualDeviceLibrary::Instance().DestroyDevice(device);
}

int noxdevGetDeviceCap(NoxdevHandle device, tag_DEVICECAP* capability) {
  return VirtualDeviceLibrary::Instance().GetDeviceCap(device, capability);
}

int noxdevOpenDevice(NoxdevHandle device, DWORD mode, const char* directory) {
  return VirtualDeviceLibrary::Instance().OpenDevice(device, mode, directory);
}

int noxdevCloseDevice(NoxdevHandle device) {
  return VirtualDeviceLibrary::Instance().CloseDevice(device);
}

int noxdevSetTVOut(NoxdevHandle device, DWORD first, DWORD second) {
  return VirtualDeviceLibrary::Instance().SetTVOut(device, first, second);
}

int noxdevIOCtl(NoxdevHandle device, BYTE code, DWORD first, DWORD second) {
  return VirtualDeviceLibrary::Instance().IOCtl(device, code, first, second);
}

int noxdevRestore(NoxdevHandle device) {
  return VirtualDeviceLibrary::Instance().Restore(device);
}

int noxdevChIsValidID(NoxdevHandle device, DWORD channel, int* is_valid) {
  return VirtualDeviceLibrary::Instance().IsValidChannel(device, channel, is_valid);
}
