#include "tools/zebtool/frame_recovery.h"

#include <utility>

#include "tools/zebtool/frame_signs.h"

using namespace zebx;

namespace zebtool {

FrameRecovery::FrameRecovery(RecordingBytes& bytes, ULONGLONG offset, bool at_block,
                             HoleSink on_hole)
    : m_bytes(bytes),
      m_on_hole(std::move(on_hole)),
      m_position(offset),
      m_limit(at_block ? offset : bytes.Length()) {}

std::optional<RecoveredFrame> FrameRecovery::Next() {
  while (m_position < m_bytes.Length()) {
    if (m_trusted_frames > 0) return TakeTrustedFrame();
    if (m_known_sync > m_position) {
      SkipTo(m_known_sync);
    } else if (m_position == m_limit || m_bytes.IsBlock(m_position, m_block)) {
      EnterBlock();
    } else if (const auto frame = TakeFrameBySigns()) {
      return frame;
    }
  }
  return std::nullopt;
}

void FrameRecovery::EnterBlock() {
  const ULONGLONG offset = m_position;
  m_limit = m_bytes.Length();
  const auto header = m_bytes.BlockAt(offset);
  if (!header) {
    SkipTo(m_limit);
    return;
  }
  m_block = static_cast<DWORD>(offset);
  m_position = offset + kBlockHeaderBytes;
  const ULONGLONG next = header->m_next;
  if (header->m_next == kNoBlock || next < m_position || next > m_bytes.Length()) return;
  if (m_bytes.IsFilledByFrames(m_position, header->m_frames, next)) {
    m_trusted_frames = header->m_frames;
    m_limit = next;
    return;
  }
  const auto neighbour = m_bytes.BlockAt(next);
  if (neighbour && neighbour->m_previous == offset) m_limit = next;
}

std::optional<RecoveredFrame> FrameRecovery::TakeTrustedFrame() {
  const auto header = m_bytes.AnyFrameAt(m_position);
  if (!header) {
    // The file shrank meanwhile.
    m_trusted_frames = 0;
    m_position = m_bytes.Length();
    return std::nullopt;
  }
  --m_trusted_frames;
  const RecoveredFrame frame{m_position, *header};
  m_position += header->TotalBytes();
  m_last_stamp = header->m_time_stamp;
  return frame;
}

std::optional<RecoveredFrame> FrameRecovery::TakeFrameBySigns() {
  const auto header = m_bytes.FrameAt(m_position);
  if (!header || m_position + header->TotalBytes() > m_limit) {
    SkipTo(m_bytes.FindSync(m_position + 1, m_limit));
    return std::nullopt;
  }
  const ULONGLONG end = m_position + header->TotalBytes();
  if (IsOutOfTime(header->m_time_stamp, end)) {
    SkipTo(m_bytes.FindSync(m_position + 1, m_limit));
    return std::nullopt;
  }
  if (!SomethingBegins(end)) {
    // Either what follows is damaged or this frame's length is: whichever lies before the place
    // where the file makes sense again.
    const ULONGLONG sync = m_bytes.FindSync(m_position + 1, m_limit);
    if (sync < end) {
      SkipTo(sync);
      return std::nullopt;
    }
    m_known_sync = sync;
  }
  const RecoveredFrame frame{m_position, *header};
  m_position = end;
  m_last_stamp = header->m_time_stamp;
  return frame;
}

// A stamp that fits neither the frame before nor the one behind is damage; with the one behind it
// is a gap in the recording.
bool FrameRecovery::IsOutOfTime(DWORD time_stamp, ULONGLONG end) {
  if (!m_last_stamp || StampsFit(*m_last_stamp, time_stamp)) return false;
  const auto next = m_bytes.FrameAt(end);
  return !next || !StampsFit(time_stamp, next->m_time_stamp);
}

bool FrameRecovery::SomethingBegins(ULONGLONG offset) {
  if (offset == m_limit || m_bytes.IsBlock(offset, m_block)) return true;
  const bool may_be_cut = m_limit == m_bytes.Length();
  if (may_be_cut && m_limit - offset < kVoicedFrameHeaderBytes) return true;
  const auto header = m_bytes.FrameAt(offset);
  return header && (may_be_cut || offset + header->TotalBytes() <= m_limit);
}

void FrameRecovery::SkipTo(ULONGLONG offset) {
  if (offset > m_position) m_on_hole({m_position, offset});
  m_position = offset;
}

}  // namespace zebtool
