#include "platform/os/sound/wave_device.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "platform/os/clock.h"
#include "platform/os/windows/windows.h"

namespace os::sound {

namespace {

// How long the thread sleeps at most before it looks at the clock again while it has something to
// play. The moment that it waits for is one of the clock in force, which may be stepped or set back
// at any time, also just before it begins to wait.
constexpr DWORD kClockSliceMs = 10;

}  // namespace

WaveDevice::WaveDevice(HWAVEOUT handle, UINT number, const WaveFormat& format, HWND window,
                       SoundOutlet& outlet)
    : m_handle(handle),
      m_number(number),
      m_format(format),
      m_window(window),
      m_outlet(outlet),
      m_queue(format, GetTickCount()) {}

WaveDevice::~WaveDevice() {
  Stop();
}

bool WaveDevice::Start() {
  return m_thread.Start([this] { Run(); });
}

void WaveDevice::Stop() {
  {
    const std::lock_guard lock(m_mutex);
    m_is_stopped = true;
  }
  m_changed.notify_one();
  m_thread.JoinWithoutAnswering();
}

void WaveDevice::Run() {
  do {
    Deliver();
  } while (WaitForNext());
}

bool WaveDevice::WaitForNext() {
  std::unique_lock lock = LockAtNow();
  if (m_is_stopped || !m_over.empty()) return !m_is_stopped;
  if (const std::optional<DWORD> wait_ms = m_queue.MsToNextEnd()) {
    m_changed.wait_for(lock, std::chrono::milliseconds(std::min(*wait_ms, kClockSliceMs)));
  } else {
    m_changed.wait(lock);
  }
  return true;
}

// The clock is read without the lock, since it may be a host's. A tick is good only when no other
// thread has moved the time meanwhile: an older one looks like a clock that was set back.
std::unique_lock<std::mutex> WaveDevice::LockAtNow() {
  while (true) {
    const ULONGLONG moves = m_moves;
    const DWORD now = GetTickCount();
    std::unique_lock lock(m_mutex);
    if (m_moves != moves) continue;
    ++m_moves;
    Finish(m_queue.TakeOver(now));
    return lock;
  }
}

void WaveDevice::Finish(WrittenBuffers buffers) {
  for (const WrittenBuffer& buffer : buffers) {
    const std::atomic_ref flags(buffer.m_header->m_flags);
    flags = (flags & ~DWORD{kWaveQueued}) | kWaveDone;
  }
  m_over.splice(m_over.end(), buffers);
}

WrittenBuffers WaveDevice::TakeOver() {
  const std::lock_guard lock(m_mutex);
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
  {
    const auto lock = LockAtNow();
    if (m_is_shut) return kWaveBadHandle;
    const std::atomic_ref flags(header.m_flags);
    if ((flags & kWavePrepared) == 0) return kWaveUnprepared;
    if ((flags & kWaveQueued) != 0) return kWaveStillPlaying;
    flags = (flags & ~DWORD{kWaveDone}) | kWaveQueued;
    m_queue.Write(std::move(buffer));
  }
  m_changed.notify_one();
  return kWaveNoError;
}

void WaveDevice::Reset() {
  {
    const auto lock = LockAtNow();
    Finish(m_queue.Reset());
  }
  Deliver();
}

UINT WaveDevice::Shut() {
  const auto lock = LockAtNow();
  if (m_is_shut) return kWaveBadHandle;
  if (!m_queue.IsEmpty()) return kWaveStillPlaying;
  m_is_shut = true;
  return kWaveNoError;
}

void WaveDevice::End() {
  Stop();
  Deliver();
  const std::lock_guard order(m_outlet.m_mutex);
  if (m_outlet.m_sink != nullptr) m_outlet.m_sink->Close(m_handle);
}

}  // namespace os::sound
