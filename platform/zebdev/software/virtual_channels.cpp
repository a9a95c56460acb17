#include "platform/zebdev/software/virtual_channels.h"

#include <utility>

#include "platform/zebdev/software/camera_sources.h"
#include "platform/zebdev/software/virtual_device_library.h"

namespace zebx::zebdev {

void SetDrive(Drive drive) {
  VirtualDeviceLibrary::Instance().SetDrive(drive);
}

int StepChannel(DWORD device, DWORD channel) {
  const auto running = VirtualDeviceLibrary::Instance().Running(device, channel);
  return running != nullptr && running->Step() ? 1 : 0;
}

void SetSource(DWORD device, DWORD channel, std::shared_ptr<ChannelSource> source) {
  if (source != nullptr) source = MakeGuarded(std::move(source));
  const auto controls = VirtualDeviceLibrary::Instance().Controls(device, channel);
  const std::lock_guard lock(controls->m_mutex);
  controls->m_source.swap(source);
}

void LoseVideo(DWORD device, DWORD channel, bool is_lost) {
  VirtualDeviceLibrary::Instance().Controls(device, channel)->m_is_lost = is_lost;
}

void ShowFaces(DWORD device, DWORD channel, DWORD faces) {
  VirtualDeviceLibrary::Instance().Controls(device, channel)->m_faces = faces;
}

void SetLiveSound(LiveSound sink, void* user) {
  VirtualDeviceLibrary::Instance().Sound().SetSink(sink, user);
}

std::optional<int> CallChannel(DWORD device, DWORD channel, DWORD type, std::uintptr_t first,
                               std::uintptr_t second, void* packet) {
  const auto running = VirtualDeviceLibrary::Instance().Running(device, channel);
  return running == nullptr ? std::nullopt : running->Call(type, first, second, packet);
}

}  // namespace zebx::zebdev
