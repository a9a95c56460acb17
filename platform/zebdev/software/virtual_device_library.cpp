#include "platform/zebdev/software/virtual_device_library.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include "platform/framework/error_report.h"
#include "platform/zebdev/software/open_mode.h"

namespace zebx::zebdev {
namespace {

constexpr const char* kFunctionNames[kFunctions] = {
    "noxdevInitialize",
    "noxdevInvalidate",
    "noxdevGetDeviceNum",
    "noxdevCreateDevice",
    "noxdevDestroyDevice",
    "noxdevGetDeviceCap",
    "noxdevOpenDevice",
    "noxdevCloseDevice",
    "noxdevSetTVOut",
    "noxdevIOCtl",
    "noxdevRestore",
    "noxdevChIsValidID",
    "noxdevChSetChannelName",
    "noxdevChSetConfig",
    "noxdevChStart",
    "noxdevChStop",
    "noxdevChRequestIFrame",
    "noxdevChEnumPreAlarmData",
    "noxdevChStartPreviewVideo",
    "noxdevChStartPreviewAudio",
    "noxdevChStopPreviewAudio",
    "noxdevChChangeShow",
    "noxdevChCapturePicture",
    "noxdevGetDefaultColor",
    "noxdevChSetVideoColor",
    "noxdevChGetVideoColor",
    "noxdevChAddMaskArea",
    "noxdevChClearMaskArea",
    "noxdevChGetMaskInfo",
};

}  // namespace

VirtualDeviceLibrary::VirtualDeviceLibrary() : m_script(kFunctionNames) {}

VirtualDeviceLibrary& VirtualDeviceLibrary::Instance() {
  // Stays for threads that end after main has; only what runs is ended.
  static VirtualDeviceLibrary& instance = *new VirtualDeviceLibrary;
  struct AtExit {
    AtExit() = default;
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;
    ~AtExit() { instance.EndAll(); }
  };
  static const AtExit at_exit;
  return instance;
}

void VirtualDeviceLibrary::SetPlan(std::vector<VirtualDevice> devices) {
  EndAll();
  m_sound.SetSink(nullptr, nullptr);
  m_script.Reset();
  const std::lock_guard lock(m_mutex);
  m_plan = std::move(devices);
  m_has_plan = true;
  m_is_ready = false;
  m_drive = Drive::kPaced;
  m_controls.clear();
}

void VirtualDeviceLibrary::SetDrive(Drive drive) {
  const std::lock_guard lock(m_mutex);
  m_drive = drive;
}

std::shared_ptr<ChannelControls> VirtualDeviceLibrary::Controls(DWORD device, DWORD channel) {
  const std::lock_guard lock(m_mutex);
  return ControlsOf(device, channel);
}

std::shared_ptr<ChannelRun> VirtualDeviceLibrary::Running(DWORD device, DWORD channel) {
  NoxdevHandle handle = nullptr;
  {
    const std::lock_guard lock(m_mutex);
    for (const Device& created : m_devices) {
      if (created.m_number == device) handle = created.m_handle;
    }
  }
  const auto found = FindChannel(handle, channel);
  return found == nullptr ? nullptr : found->Running();
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
  const auto invalidate = [this] {
    {
      const std::lock_guard lock(m_mutex);
      if (!std::exchange(m_is_ready, false)) return false;
    }
    EndAll();
    return true;
  };
  return m_script.Call(static_cast<std::size_t>(Function::kInvalidate), invalidate);
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
    const bool is_held = std::any_of(m_devices.begin(), m_devices.end(),
                                     [&](const Device& held) { return held.m_number == number; });
    if (!m_is_ready || device == nullptr || number >= m_plan.size() || is_held) return false;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a number in the place of an address
    *device = reinterpret_cast<NoxdevHandle>(++m_last_handle);
    m_devices.push_back({*device, number, m_plan[number], false, {}});
    return true;
  };
  return Call(Function::kCreateDevice, create, number);
}

int VirtualDeviceLibrary::DestroyDevice(NoxdevHandle device) {
  const auto destroy = [&] {
    Channels channels;
    {
      const std::lock_guard lock(m_mutex);
      Device* found = Find(device);
      if (found == nullptr) return false;
      channels = std::move(found->m_channels);
      std::erase_if(m_devices, [&](const Device& held) { return held.m_handle == device; });
    }
    End(channels);
    return true;
  };
  return m_script.Call(static_cast<std::size_t>(Function::kDestroyDevice), destroy,
                       NumberOf(device));
}

int VirtualDeviceLibrary::GetDeviceCap(NoxdevHandle device, tag_DEVICECAP* capability) {
  return CallOn(device, Function::kGetDeviceCap, [&](const Device& found) {
    if (capability == nullptr) return false;
    *capability = CapabilityOf(found);
    return true;
  });
}

int VirtualDeviceLibrary::OpenDevice(NoxdevHandle device, DWORD mode, const char* directory) {
  const auto open = [&](Device& found) {
    if (found.m_is_open || mode >= kOpenModes || directory == nullptr) return false;
    found.m_channels = MakeChannels(found, mode, directory);
    found.m_is_open = true;
    return true;
  };
  return CallOn(device, Function::kOpenDevice, open, mode, directory);
}

int VirtualDeviceLibrary::CloseDevice(NoxdevHandle device) {
  const auto close = [&] {
    Channels channels;
    {
      const std::lock_guard lock(m_mutex);
      Device* found = Find(device);
      if (found == nullptr || !std::exchange(found->m_is_open, false)) return false;
      channels = std::exchange(found->m_channels, {});
    }
    End(channels);
    return true;
  };
  return m_script.Call(static_cast<std::size_t>(Function::kCloseDevice), close, NumberOf(device));
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
  const auto restore = [&] {
    Channels channels;
    {
      const std::lock_guard lock(m_mutex);
      const Device* found = Find(device);
      if (found == nullptr) return false;
      channels = found->m_channels;
    }
    for (const auto& [number, channel] : channels) {
      if (const auto running = channel->Running()) running->DrawAgain();
    }
    return true;
  };
  return m_script.Call(static_cast<std::size_t>(Function::kRestore), restore, NumberOf(device));
}

int VirtualDeviceLibrary::IsValidChannel(NoxdevHandle device, DWORD channel, int* is_valid) {
  const auto look = [&](const Device& found) {
    if (is_valid == nullptr) return false;
    const int channels = CapabilityOf(found).m_channels & kDeviceChannelsMask;
    *is_valid = channel < static_cast<DWORD>(channels) ? 1 : 0;
    return true;
  };
  return CallOn(device, Function::kChIsValidID, look, channel);
}

int VirtualDeviceLibrary::StartChannel(NoxdevHandle device, DWORD channel, DWORD reserved,
                                       NoxdevChannelProc callback, void* context) {
  const auto start = [&](VirtualChannel& found) {
    if (callback == nullptr) return false;
    CollectLeft(false);
    Drive drive = Drive::kPaced;
    {
      const std::lock_guard lock(m_mutex);
      drive = m_drive;
    }
    try {
      return found.Start(callback, context, drive);
    } catch (const std::bad_alloc& failure) {
      ReportError(failure);
      return false;
    }
  };
  return CallOnChannel(Function::kChStart, device, channel, start, reserved);
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
    Device* device = Find(handle);
    return device != nullptr && action(*device);
  };
  return Call(function, on_device, NumberOf(handle), words...);
}

std::optional<DWORD> VirtualDeviceLibrary::NumberOf(NoxdevHandle handle) {
  const std::lock_guard lock(m_mutex);
  const Device* device = Find(handle);
  return device == nullptr ? std::nullopt : std::optional(device->m_number);
}

std::shared_ptr<VirtualChannel> VirtualDeviceLibrary::FindChannel(NoxdevHandle handle,
                                                                  DWORD channel) {
  const std::lock_guard lock(m_mutex);
  Device* device = Find(handle);
  if (device == nullptr) return nullptr;
  const auto found = device->m_channels.find(channel);
  return found == device->m_channels.end() ? nullptr : found->second;
}

VirtualDeviceLibrary::Device* VirtualDeviceLibrary::Find(NoxdevHandle handle) {
  const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                  [&](const Device& device) { return device.m_handle == handle; });
  return found == m_devices.end() ? nullptr : &*found;
}

const tag_DEVICECAP& VirtualDeviceLibrary::CapabilityOf(const Device& device) {
  const VirtualDevice& planned = device.m_planned;
  return device.m_is_open && planned.m_capability_when_open ? *planned.m_capability_when_open
                                                            : planned.m_capability;
}

}  // namespace zebx::zebdev
