// The channels of the virtual devices: made when a device opens, ended when it goes.
#include <algorithm>
#include <iterator>

#include "platform/zebdev/software/camera_sources.h"
#include "platform/zebdev/software/open_mode.h"
#include "platform/zebdev/software/picture_colour.h"
#include "platform/zebdev/software/virtual_device_library.h"

namespace zebx::zebdev {
namespace {

// Devices of this type have a second stream of their last channels, at half the size, behind them.
constexpr DWORD kSecondStreamType = 0x800;
constexpr DWORD kSecondStreamDistance = 2;

DWORD ChannelsOf(const VirtualDevice& device) {
  return device.m_capability.m_channels & kDeviceChannelsMask;
}

}  // namespace

VirtualDeviceLibrary::Channels VirtualDeviceLibrary::MakeChannels(const Device& device, DWORD mode,
                                                                  const CString& directory) {
  const DWORD type = device.m_planned.m_capability.m_device_type;
  const OpenMode opened = OpenModeOf(mode, type);
  const tag_DEVCOLOR color = DefaultColour(type, opened.m_is_ntsc).value_or(tag_DEVCOLOR{});
  const CString& planned = device.m_planned.m_directory;
  const CString films = planned.empty() ? directory : planned;
  DWORD first_camera = 0;  // films are numbered over all devices
  for (DWORD before = 0; before < device.m_number; ++before) {
    first_camera += ChannelsOf(m_plan[before]);
  }

  Channels channels;
  const auto add = [&](DWORD number, int divisor, auto open) {
    const ChannelIdentity identity = {.m_device = device.m_handle,
                                      .m_device_number = device.m_number,
                                      .m_channel = number,
                                      .m_is_ntsc = opened.m_is_ntsc,
                                      .m_width = opened.m_width / divisor,
                                      .m_height = opened.m_height / divisor};
    auto controls = ControlsOf(device.m_number, number);
    const auto open_source = [controls, open]() -> std::shared_ptr<ChannelSource> {
      {
        const std::lock_guard lock(controls->m_mutex);
        if (controls->m_source != nullptr) return controls->m_source;
      }
      return open();
    };
    channels[number] = std::make_shared<VirtualChannel>(
        std::make_shared<ChannelState>(identity, color), controls, open_source, m_sound);
  };
  const DWORD count = ChannelsOf(device.m_planned);
  for (DWORD channel = 0; channel < count; ++channel) {
    add(channel, 1, [films, camera = first_camera + channel] { return OpenCamera(films, camera); });
  }
  for (DWORD camera = 0; type == kSecondStreamType && camera < count; ++camera) {
    if (camera + kSecondStreamDistance < count) continue;
    add(camera + kSecondStreamDistance, 2,
        [state = channels[camera]->SharedState()] { return MakeSecondStream(state); });
  }
  return channels;
}

std::shared_ptr<ChannelControls> VirtualDeviceLibrary::ControlsOf(DWORD device, DWORD channel) {
  auto& controls = m_controls[{device, channel}];
  if (controls == nullptr) controls = std::make_shared<ChannelControls>();
  return controls;
}

void VirtualDeviceLibrary::End(const Channels& channels) {
  for (const auto& [number, channel] : channels) {
    Runs left = channel->End();
    const std::lock_guard lock(m_mutex);
    m_left.insert(m_left.end(), std::make_move_iterator(left.begin()),
                  std::make_move_iterator(left.end()));
  }
  CollectLeft(false);
}

void VirtualDeviceLibrary::EndAll() {
  std::vector<Device> devices;
  {
    const std::lock_guard lock(m_mutex);
    devices.swap(m_devices);
    m_is_ready = false;  // nobody gets a device while they end
  }
  for (const Device& device : devices) End(device.m_channels);
  CollectLeft(true);
}

void VirtualDeviceLibrary::CollectLeft(bool waits) {
  Runs left;
  {
    const std::lock_guard lock(m_mutex);
    left.swap(m_left);
  }
  std::erase_if(
      left, [&](const auto& run) { return (waits || run->IsDeserted()) && run->WaitUntilOver(); });
  const std::lock_guard lock(m_mutex);
  m_left.insert(m_left.end(), std::make_move_iterator(left.begin()),
                std::make_move_iterator(left.end()));
}

}  // namespace zebx::zebdev
