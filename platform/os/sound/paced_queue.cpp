#include "platform/os/sound/paced_queue.h"

#include <algorithm>
#include <utility>

namespace os::sound {

namespace {

constexpr ULONGLONG kMsPerSecond = 1000;

}  // namespace

PacedQueue::PacedQueue(const WaveFormat& format, DWORD tick_ms)
    : m_bytes_per_second(format.m_bytes_per_second),
      m_block_align(format.m_block_align),
      m_tick_ms(tick_ms) {}

void PacedQueue::MoveTo(DWORD tick_ms) {
  const DWORD forward_ms = tick_ms - m_tick_ms;
  const DWORD back_ms = m_tick_ms - tick_ms;
  if (forward_ms <= back_ms) m_now_ms += forward_ms;
  m_tick_ms = tick_ms;
}

ULONGLONG PacedQueue::RunMomentMs(ULONGLONG bytes) const {
  // Rounded up: a buffer is never over too early.
  return m_run_begin_ms + (bytes * kMsPerSecond + m_bytes_per_second - 1) / m_bytes_per_second;
}

ULONGLONG PacedQueue::RunEndMs() const {
  return RunMomentMs(m_run_bytes);
}

ULONGLONG PacedQueue::FirstEndMs() const {
  return RunMomentMs(m_run_bytes + m_buffers.front().m_bytes.size());
}

void PacedQueue::Write(WrittenBuffers buffer) {
  if (m_buffers.empty() && m_now_ms > RunEndMs()) {
    m_silence_ms += m_now_ms - RunEndMs();
    m_run_begin_ms = m_now_ms;
    m_run_bytes = 0;
  }
  m_buffers.splice(m_buffers.end(), buffer);
}

void PacedQueue::TakeFirst(std::size_t heard_bytes, WrittenBuffers& taken) {
  WrittenBuffer& first = m_buffers.front();
  first.m_heard_bytes = heard_bytes;
  first.m_begin_ms = RunEndMs();
  if (heard_bytes != 0) first.m_silence_ms = std::exchange(m_silence_ms, 0);
  m_run_bytes += first.m_bytes.size();
  taken.splice(taken.end(), m_buffers, m_buffers.begin());
}

WrittenBuffers PacedQueue::TakeOver(DWORD tick_ms) {
  MoveTo(tick_ms);
  WrittenBuffers over;
  while (!m_buffers.empty() && FirstEndMs() <= m_now_ms) {
    TakeFirst(m_buffers.front().m_bytes.size(), over);
  }
  return over;
}

WrittenBuffers PacedQueue::Reset() {
  WrittenBuffers left;
  if (m_buffers.empty()) return left;
  const ULONGLONG run_heard = (m_now_ms - m_run_begin_ms) * m_bytes_per_second / kMsPerSecond;
  const ULONGLONG heard = run_heard - std::min(run_heard, m_run_bytes);
  TakeFirst(std::min<ULONGLONG>(heard - heard % m_block_align, m_buffers.front().m_bytes.size()),
            left);
  while (!m_buffers.empty()) TakeFirst(0, left);
  m_run_begin_ms = m_now_ms;
  m_run_bytes = 0;
  return left;
}

std::optional<DWORD> PacedQueue::MsToNextEnd() const {
  if (m_buffers.empty()) return std::nullopt;
  const ULONGLONG end_ms = FirstEndMs();
  // Less than what the wait takes for no limit, however long the buffer.
  constexpr ULONGLONG kLongestMs = 0x7FFFFFFF;
  return static_cast<DWORD>(std::min(end_ms - std::min(end_ms, m_now_ms), kLongestMs));
}

}  // namespace os::sound
