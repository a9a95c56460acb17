#include "platform/os/sound/wave_device.h"

#include <array>
#include <atomic>
#include <utility>

#include "platform/os/clock.h"
#include "platform/os/windows/windows.h"

namespace os::sound {

WaveDevice::WaveDevice(HWAVEOUT handle, UINT number, const WaveFormat& format, HWND window,
                       SoundOutlet& outlet)
    : m_handle(handle),
      m_number(number),
      m_format(format),
      m_window(window),
      m_outlet(outlet),
      m_queue(format, GetTickCount()) {}

WaveDevice::~WaveDevice() {
  m_stop.Set();
  m_thread.JoinWithoutAnswering();
}

bool WaveDevice::Start() {
  return m_thread.Start([this] { Run(); });
}

void WaveDevice::Run() {
  const std::array<Event*, 2> events = {&m_stop, &m_changed};
  do {
    m_changed.Reset();
    Deliver();
  } while (WaitForMultipleObjects(events, WaitMs()) != 0);
}

DWORD WaveDevice::WaitMs() {
  const DWORD now = GetTickCount();
  const std::lock_guard lock(m_mutex);
  Move(now);
  return m_over.empty() ? m_queue.MsToNextEnd().value_or(kInfinite) : 0;
}

void WaveDevice::Move(DWORD tick_ms) {
  Finish(m_queue.TakeOver(tick_ms));
}

void WaveDevice::Finish(WrittenBuffers buffers) {
  for (const WrittenBuffer& buffer : buffers) {
    const std::atomic_ref flags(buffer.m_header->m_flags);
    flags = (flags & ~DWORD{kWaveQueued}) | kWaveDone;
  }
  m_over.splice(m_over.end(), buffers);
}

WrittenBuffers WaveDevice::TakeOver() {
  const DWORD now = GetTickCount();
  const std::lock_guard lock(m_mutex);
  Move(now);
  WrittenBuffers first;
  if (!m_over.empty()) first.splice(first.begin(), m_over, m_over.begin());
  return first;
}

void WaveDevice::Deliver() {
  const std::lock_guard order(m_outlet.m_mutex);
  for (WrittenBuffers first = TakeOver(); !first.empty(); first = TakeOver()) {
    const WrittenBuffer& buffer = first.front();
    if (m_outlet.m_sink != nullptr && buffer.m_heard_bytes != 0) {
      m_outlet.m_sink->Play({.m_device = m_handle,
                             .m_number = m_number,
                             .m_format = m_format,
                             .m_begin_ms = buffer.m_begin_ms,
                             .m_silence_ms = buffer.m_silence_ms,
                             .m_bytes = std::span(buffer.m_bytes).first(buffer.m_heard_bytes)});
    }
    // The address alone: the header is its owner's again.
    if (m_window != nullptr) {
      PostNotice(m_window, kMmWomDone, reinterpret_cast<WPARAM>(m_handle),
                 reinterpret_cast<LPARAM>(buffer.m_header));
    }
  }
}

UINT WaveDevice::Write(WaveHeader& header) {
  if ((header.m_data == nullptr && header.m_length != 0) ||
      header.m_length % m_format.m_block_align != 0) {
    return kWaveBadParameter;
  }
  WrittenBuffers buffer(1);
  buffer.front().m_header = &header;
  buffer.front().m_bytes.assign(header.m_data, header.m_data + header.m_length);
  const DWORD now = GetTickCount();
  {
    const std::lock_guard lock(m_mutex);
    if (m_is_shut) return kWaveBadHandle;
    const std::atomic_ref flags(header.m_flags);
    if ((flags & kWavePrepared) == 0) return kWaveUnprepared;
    if ((flags & kWaveQueued) != 0) return kWaveStillPlaying;
    Move(now);
    flags = (flags & ~DWORD{kWaveDone}) | kWaveQueued;
    m_queue.Write(std::move(buffer));
  }
  m_changed.Set();
  return kWaveNoError;
}

void WaveDevice::Reset() {
  const DWORD now = GetTickCount();
  {
    const std::lock_guard lock(m_mutex);
    Move(now);
    Finish(m_queue.Reset());
  }
  Deliver();
}

UINT WaveDevice::Shut() {
  const DWORD now = GetTickCount();
  const std::lock_guard lock(m_mutex);
  if (m_is_shut) return kWaveBadHandle;
  Move(now);
  if (!m_queue.IsEmpty()) {
    // The thread may have begun to wait when the clock was not set back yet.
    m_changed.Set();
    return kWaveStillPlaying;
  }
  m_is_shut = true;
  return kWaveNoError;
}

void WaveDevice::End() {
  m_stop.Set();
  m_thread.JoinWithoutAnswering();
  Deliver();
  const std::lock_guard order(m_outlet.m_mutex);
  if (m_outlet.m_sink != nullptr) m_outlet.m_sink->Close(m_handle);
}

}  // namespace os::sound
