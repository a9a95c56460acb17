#include "platform/os/sound/wave_out_library.h"

#include <array>

namespace os::sound {

namespace {

constexpr std::array<const char*, kFunctions> kNames = {
    "waveOutGetNumDevs",      "waveOutOpen",  "waveOutPrepareHeader", "waveOutWrite",
    "waveOutUnprepareHeader", "waveOutReset", "waveOutClose"};

}  // namespace

WaveOutLibrary::WaveOutLibrary() : m_script(kNames) {}

WaveOutLibrary& WaveOutLibrary::Get() {
  // Never destroyed: a device may be open when main returns.
  static WaveOutLibrary& library = *new WaveOutLibrary;
  return library;
}

void WaveOutLibrary::SetSink(Sink* sink) {
  const std::lock_guard lock(m_outlet.m_mutex);
  m_outlet.m_sink = sink;
}

HWAVEOUT WaveOutLibrary::Open(UINT number, const WaveFormat& format, HWND window) {
  std::unique_lock lock(m_mutex);
  // A number that is never used again, in the place of an address.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  auto* const handle = reinterpret_cast<HWAVEOUT>(++m_last_handle);
  lock.unlock();
  auto device = std::make_shared<WaveDevice>(handle, number, format, window, m_outlet);
  if (!device->Start()) return nullptr;
  lock.lock();
  m_open.emplace(handle, std::move(device));
  return handle;
}

std::shared_ptr<WaveDevice> WaveOutLibrary::Find(HWAVEOUT handle) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_open.find(handle);
  return found == m_open.end() ? nullptr : found->second;
}

UINT WaveOutLibrary::Close(HWAVEOUT handle) {
  const std::shared_ptr<WaveDevice> device = Find(handle);
  if (device == nullptr) return kWaveBadHandle;
  const UINT result = device->Shut();
  if (result != kWaveNoError) return result;
  {
    const std::lock_guard lock(m_mutex);
    m_open.erase(handle);
  }
  device->End();
  return kWaveNoError;
}

}  // namespace os::sound
