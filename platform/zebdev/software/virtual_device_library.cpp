#include "platform/zebdev/software/virtual_device_library.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "platform/framework/error_report.h"

namespace zebx::zebdev {
namespace {

constexpr DWORD kOpenModes = 4;

constexpr const char* kFunctionNames[kFunctions] = {
    "noxdevInitialize",    "noxdevInvalidate",   "noxdevGetDeviceNum", "noxdevCreateDevice",
    "noxdevDestroyDevice", "noxdevGetDeviceCap", "noxdevOpenDevice",   "noxdevCloseDevice",
    "noxdevSetTVOut",      "noxdevIOCtl",        "noxdevRestore",      "noxdevChIsValidID",
};

const tag_DEVICECAP& CapabilityOf(const NoxdevDevice& device) {
  const VirtualDevice& planned = device.m_device;
  return device.m_is_open && planned.m_capability_when_open ? *planned.m_capability_when_open
                                                            : planned.m_capability;
}

}  // namespace

VirtualDeviceLibrary::VirtualDeviceLibrary() : m_script(kFunctionNames) {}

VirtualDeviceLibrary& VirtualDeviceLibrary::Instance() {
  static VirtualDeviceLibrary instance;
  return instance;
}

void VirtualDeviceLibrary::SetPlan(std::vector<VirtualDevice> devices) {
  const std::lock_guard lock(m_mutex);
  m_plan = std::move(devices);
  m_has_plan = true;
  m_is_ready = false;
  m_created.clear();
  m_script.Reset();
}

void VirtualDeviceLibrary::ReadEnvironment() {
  const char* text = std::getenv("ZEBX_DEVICES");
  if (text == nullptr || *text == '\0') return;
  CString fault;
  auto devices = ParseDevicePlan(text, &fault);
  if (!devices) ReportError(std::invalid_argument("ZEBX_DEVICES: " + fault));
  const std::lock_guard lock(m_mutex);
  if (devices && !m_has_plan) m_plan = std::move(*devices);
}

int VirtualDeviceLibrary::Initialize(DWORD start_up_word, DWORD reserved) {
  std::call_once(m_environment_once, [this] { ReadEnvironment(); });
  const auto initialize = [this] {
    m_is_ready = true;
    return true;
  };
  return Call(Function::kInitialize, initialize, start_up_word, reserved);
}

int VirtualDeviceLibrary::Invalidate() {
  return Call(Function::kInvalidate, [this] {
    m_created.clear();
    return std::exchange(m_is_ready, false);
  });
}

int VirtualDeviceLibrary::GetDeviceNum(DWORD* count) {
  return Call(Function::kGetDeviceNum, [&] {
    if (!m_is_ready || count == nullptr) return false;
    *count = static_cast<DWORD>(m_plan.size());
    return true;
  });
}

int VirtualDeviceLibrary::CreateDevice(NoxdevHandle* device, DWORD number) {
  const auto create = [&] {
    const bool is_held = std::any_of(m_created.begin(), m_created.end(), [&](const auto& created) {
      return created->m_number == number;
    });
    if (!m_is_ready || device == nullptr || number >= m_plan.size() || is_held) return false;
    m_created.push_back(std::make_unique<NoxdevDevice>());
    *device = m_created.back().get();
    (*device)->m_number = number;
    (*device)->m_device = m_plan[number];
    return true;
  };
  return Call(Function::kCreateDevice, create, number);
}

int VirtualDeviceLibrary::DestroyDevice(NoxdevHandle device) {
  return CallOn(device, Function::kDestroyDevice, [this](NoxdevDevice& found) {
    std::erase_if(m_created, [&](const auto& created) { return created.get() == &found; });
    return true;
  });
}

int VirtualDeviceLibrary::GetDeviceCap(NoxdevHandle device, tag_DEVICECAP* capability) {
  return CallOn(device, Function::kGetDeviceCap, [&](const NoxdevDevice& found) {
    if (capability == nullptr) return false;
    *capability = CapabilityOf(found);
    return true;
  });
}

int VirtualDeviceLibrary::OpenDevice(NoxdevHandle device, DWORD mode, const char* directory) {
  const auto open = [&](NoxdevDevice& found) {
    if (found.m_is_open || mode >= kOpenModes || directory == nullptr) return false;
    found.m_is_open = true;
    return true;
  };
  return CallOn(device, Function::kOpenDevice, open, mode, directory);
}

int VirtualDeviceLibrary::CloseDevice(NoxdevHandle device) {
  return CallOn(device, Function::kCloseDevice,
                [](NoxdevDevice& found) { return std::exchange(found.m_is_open, false); });
}

int VirtualDeviceLibrary::SetTVOut(NoxdevHandle device, DWORD first, DWORD second) {
  const auto can = [](const auto& found) { return (CapabilityOf(found).m_tv & kDeviceTvBit) != 0; };
  return CallOn(device, Function::kSetTVOut, can, first, second);
}

int VirtualDeviceLibrary::IOCtl(NoxdevHandle device, BYTE code, DWORD first, DWORD second) {
  const auto can = [](const auto& found) {
    return (CapabilityOf(found).m_io_ports & kDeviceIoPortsMask) != 0;
  };
  return CallOn(device, Function::kIOCtl, can, DWORD{code}, first, second);
}

int VirtualDeviceLibrary::Restore(NoxdevHandle device) {
  return CallOn(device, Function::kRestore, [](const auto&) { return true; });
}

int VirtualDeviceLibrary::IsValidChannel(NoxdevHandle device, DWORD channel, int* is_valid) {
  const auto look = [&](const auto& found) {
    if (is_valid == nullptr) return false;
    const int channels = CapabilityOf(found).m_channels & kDeviceChannelsMask;
    *is_valid = channel < static_cast<DWORD>(channels) ? 1 : 0;
    return true;
  };
  return CallOn(device, Function::kChIsValidID, look, channel);
}

template <typename Action, typename... Words>
int VirtualDeviceLibrary::Call(Function function, Action action, Words... words) {
  const auto locked = [&] {
    const std::lock_guard lock(m_mutex);
    return action();
  };
  return m_script.Call(static_cast<std::size_t>(function), locked, words...);
}

template <typename Action, typename... Words>
int VirtualDeviceLibrary::CallOn(NoxdevHandle handle, Function function, Action action,
                                 Words... words) {
  const auto on_device = [&] {
    NoxdevDevice* device = Find(handle);
    return device != nullptr && action(*device);
  };
  return Call(function, on_device, NumberOf(handle), words...);
}

std::optional<DWORD> VirtualDeviceLibrary::NumberOf(NoxdevHandle handle) {
  const std::lock_guard lock(m_mutex);
  const NoxdevDevice* device = Find(handle);
  return device == nullptr ? std::nullopt : std::optional(device->m_number);
}

NoxdevDevice* VirtualDeviceLibrary::Find(NoxdevHandle handle) const {
  const auto found = std::find_if(m_created.begin(), m_created.end(),
                                  [&](const auto& device) { return device.get() == handle; });
  return found == m_created.end() ? nullptr : found->get();
}

}  // namespace zebx::zebdev
