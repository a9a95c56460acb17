#include "platform/zebdev/software/virtual_device_library.h"

#include <algorithm>
#include <utility>

namespace zebx::zebdev {
namespace {

constexpr int kGood = 0;
constexpr int kFailed = 1;
constexpr DWORD kOpenModes = 4;

constexpr const char* kFunctionNames[kFunctions] = {
    "noxdevInitialize",    "noxdevInvalidate",   "noxdevGetDeviceNum", "noxdevCreateDevice",
    "noxdevDestroyDevice", "noxdevGetDeviceCap", "noxdevOpenDevice",   "noxdevCloseDevice",
    "noxdevSetTVOut",      "noxdevIOCtl",        "noxdevRestore",      "noxdevChIsValidID",
};

constexpr std::size_t IndexOf(Function function) {
  return static_cast<std::size_t>(function);
}

// The arguments of a call as the journal shows them.
template <typename... Words>
CString Numbers(Words... words) {
  CString text;
  ((text += " " + std::to_string(words)), ...);
  return text;
}

const tag_DEVICECAP& CapabilityOf(const NoxdevDevice& device) {
  const VirtualDevice& planned = device.m_device;
  return device.m_is_open && planned.m_capability_when_open ? *planned.m_capability_when_open
                                                            : planned.m_capability;
}

}  // namespace

VirtualDeviceLibrary& VirtualDeviceLibrary::Instance() {
  static VirtualDeviceLibrary instance;
  return instance;
}

void VirtualDeviceLibrary::SetPlan(std::vector<VirtualDevice> devices) {
  const std::lock_guard lock(m_mutex);
  m_plan = std::move(devices);
  m_is_ready = false;
  m_created.clear();
  m_failures = {};
  m_keeps_journal = false;
  m_journal.clear();
}

void VirtualDeviceLibrary::FailCall(Function function, DWORD nth) {
  const std::lock_guard lock(m_mutex);
  m_failures[IndexOf(function)].push_back(nth);
}

void VirtualDeviceLibrary::StartJournal() {
  const std::lock_guard lock(m_mutex);
  m_keeps_journal = true;
  m_journal.clear();
}

std::vector<CString> VirtualDeviceLibrary::TakeJournal() {
  const std::lock_guard lock(m_mutex);
  return std::exchange(m_journal, {});
}

int VirtualDeviceLibrary::Initialize(DWORD start_up_word, DWORD reserved) {
  return Call(Function::kInitialize, Numbers(start_up_word, reserved), [this] {
    m_is_ready = true;
    return true;
  });
}

int VirtualDeviceLibrary::Invalidate() {
  return Call(Function::kInvalidate, {}, [this] {
    m_created.clear();
    return std::exchange(m_is_ready, false);
  });
}

int VirtualDeviceLibrary::GetDeviceNum(DWORD* count) {
  return Call(Function::kGetDeviceNum, {}, [&] {
    if (!m_is_ready || count == nullptr) return false;
    *count = static_cast<DWORD>(m_plan.size());
    return true;
  });
}

int VirtualDeviceLibrary::CreateDevice(NoxdevHandle* device, DWORD number) {
  return Call(Function::kCreateDevice, Numbers(number), [&] {
    const bool is_held = std::any_of(m_created.begin(), m_created.end(), [&](const auto& created) {
      return created->m_number == number;
    });
    if (!m_is_ready || device == nullptr || number >= m_plan.size() || is_held) return false;
    m_created.push_back(std::make_unique<NoxdevDevice>());
    *device = m_created.back().get();
    (*device)->m_number = number;
    (*device)->m_device = m_plan[number];
    return true;
  });
}

int VirtualDeviceLibrary::DestroyDevice(NoxdevHandle device) {
  return CallOn(device, Function::kDestroyDevice, {}, [this](NoxdevDevice& found) {
    std::erase_if(m_created, [&](const auto& created) { return created.get() == &found; });
    return true;
  });
}

int VirtualDeviceLibrary::GetDeviceCap(NoxdevHandle device, tag_DEVICECAP* capability) {
  return CallOn(device, Function::kGetDeviceCap, {}, [&](const NoxdevDevice& found) {
    if (capability == nullptr) return false;
    *capability = CapabilityOf(found);
    return true;
  });
}

int VirtualDeviceLibrary::OpenDevice(NoxdevHandle device, DWORD mode, const char* directory) {
  const CString arguments = Numbers(mode) + " " + (directory == nullptr ? "-" : directory);
  return CallOn(device, Function::kOpenDevice, arguments, [&](NoxdevDevice& found) {
    if (found.m_is_open || mode >= kOpenModes || directory == nullptr) return false;
    found.m_is_open = true;
    return true;
  });
}

int VirtualDeviceLibrary::CloseDevice(NoxdevHandle device) {
  return CallOn(device, Function::kCloseDevice, {},
                [](NoxdevDevice& found) { return std::exchange(found.m_is_open, false); });
}

int VirtualDeviceLibrary::SetTVOut(NoxdevHandle device, DWORD first, DWORD second) {
  return CallOn(device, Function::kSetTVOut, Numbers(first, second),
                [](const auto& found) { return (CapabilityOf(found).m_tv & kDeviceTvBit) != 0; });
}

int VirtualDeviceLibrary::IOCtl(NoxdevHandle device, BYTE code, DWORD first, DWORD second) {
  return CallOn(device, Function::kIOCtl, Numbers(code, first, second), [](const auto& found) {
    return (CapabilityOf(found).m_io_ports & kDeviceIoPortsMask) != 0;
  });
}

int VirtualDeviceLibrary::Restore(NoxdevHandle device) {
  return CallOn(device, Function::kRestore, {}, [](const auto&) { return true; });
}

int VirtualDeviceLibrary::IsValidChannel(NoxdevHandle device, DWORD channel, int* is_valid) {
  return CallOn(device, Function::kChIsValidID, Numbers(channel), [&](const auto& found) {
    if (is_valid == nullptr) return false;
    const int channels = CapabilityOf(found).m_channels & kDeviceChannelsMask;
    *is_valid = channel < static_cast<DWORD>(channels) ? 1 : 0;
    return true;
  });
}

template <typename Action>
int VirtualDeviceLibrary::Call(Function function, const CString& arguments, Action action) {
  const std::lock_guard lock(m_mutex);
  return Run(function, arguments, action);
}

template <typename Action>
int VirtualDeviceLibrary::CallOn(NoxdevHandle handle, Function function, const CString& arguments,
                                 Action action) {
  const std::lock_guard lock(m_mutex);
  NoxdevDevice* device = Find(handle);
  const CString subject = device == nullptr ? " -" : Numbers(device->m_number);
  return Run(function, subject + arguments, [&] { return device != nullptr && action(*device); });
}

template <typename Action>
int VirtualDeviceLibrary::Run(Function function, const CString& arguments, Action action) {
  const bool is_good = !IsToFail(function) && action();
  if (m_keeps_journal) {
    m_journal.push_back(kFunctionNames[IndexOf(function)] + arguments + (is_good ? "" : " failed"));
  }
  return is_good ? kGood : kFailed;
}

bool VirtualDeviceLibrary::IsToFail(Function function) {
  bool is_to_fail = false;
  std::vector<DWORD>& calls_left = m_failures[IndexOf(function)];
  for (DWORD& calls : calls_left) is_to_fail |= --calls == 0;
  std::erase(calls_left, DWORD{0});
  return is_to_fail;
}

NoxdevDevice* VirtualDeviceLibrary::Find(NoxdevHandle handle) const {
  const auto found = std::find_if(m_created.begin(), m_created.end(),
                                  [&](const auto& device) { return device.get() == handle; });
  return found == m_created.end() ? nullptr : found->get();
}

}  // namespace zebx::zebdev
