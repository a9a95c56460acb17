#include "platform/zebdev/software/virtual_device_plan.h"

#include <utility>

#include "platform/zebdev/software/virtual_device_library.h"

namespace zebx::zebdev {

VirtualDevice MakeVirtualDevice(DWORD device_type, BYTE channels) {
  VirtualDevice device;
  device.m_capability.m_device_type = device_type;
  device.m_capability.m_channels = channels;
  device.m_capability.m_io_ports = 1;
  device.m_capability.m_watchdog = kDeviceWatchdogBit;
  device.m_capability.m_tv = kDeviceTvBit;
  return device;
}

void SetDevicePlan(std::vector<VirtualDevice> devices) {
  VirtualDeviceLibrary::Instance().SetPlan(std::move(devices));
}

void FailCall(Function function, DWORD nth) {
  VirtualDeviceLibrary::Instance().Script().FailCall(static_cast<std::size_t>(function), nth);
}

void StartJournal() {
  VirtualDeviceLibrary::Instance().Script().StartJournal();
}

std::vector<CString> TakeJournal() {
  return VirtualDeviceLibrary::Instance().Script().TakeJournal();
}

}  // namespace zebx::zebdev
