#include "tools/zebtool/recording_bytes.h"

#include <algorithm>

#include "platform/framework/file.h"
#include "tools/zebtool/frame_signs.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::size_t kSearchBytes = 64 * 1024;
// So many frames in a row are no accident.
constexpr int kConvincingFrames = 3;
constexpr std::size_t kReservedAt = 10;

// What every block header keeps, before anything around it is looked at.
bool HasBlockShape(std::span<const BYTE> bytes, ULONGLONG offset) {
  if (bytes.size() < kBlockHeaderBytes) return false;
  if (bytes[kReservedAt] != 0 || bytes[kReservedAt + 1] != 0) return false;
  const auto header = BlockHeader::Parse(bytes.first<kBlockHeaderBytes>());
  const bool open = header.m_next == kNoBlock && header.m_frames == 0;
  const bool closed = header.m_next != kNoBlock && header.m_frames > 0 &&
                      header.m_next > offset + kBlockHeaderBytes;
  const bool linked = header.m_previous == kNoBlock || header.m_previous < offset;
  return (open || closed) && linked;
}

}  // namespace

std::span<const BYTE> ByteWindow::At(ULONGLONG offset, std::size_t count) {
  if (offset < m_start || offset + count > m_start + m_filled) {
    m_file.Seek(offset);
    m_start = offset;
    m_filled = m_file.Read(m_buffer);
  }
  const auto filled = std::span<const BYTE>(m_buffer).first(m_filled);
  return filled.subspan(std::min<std::size_t>(offset - m_start, m_filled))
      .first(std::min<std::size_t>(count, m_start + m_filled - offset));
}

RecordingBytes::RecordingBytes(CFile& file)
    : m_length(file.GetLength()),
      m_near(file, kSearchBytes),
      m_far(file, kVoicedFrameHeaderBytes) {}

std::optional<BlockHeader> RecordingBytes::BlockAt(ULONGLONG offset) {
  const auto bytes = m_far.At(offset, kBlockHeaderBytes);
  if (bytes.size() < kBlockHeaderBytes) return std::nullopt;
  return BlockHeader::Parse(bytes.first<kBlockHeaderBytes>());
}

std::optional<FrameHeader> RecordingBytes::AnyFrameAt(ULONGLONG offset) {
  return FrameHeader::Parse(m_far.At(offset, kVoicedFrameHeaderBytes));
}

std::optional<FrameHeader> RecordingBytes::FrameAt(ULONGLONG offset) {
  const auto header = AnyFrameAt(offset);
  return header && LooksLikeFrame(*header) ? header : std::nullopt;
}

bool RecordingBytes::StartsWithFrameOf(ULONGLONG block_offset, const BlockHeader& header) {
  const auto first = FrameAt(block_offset + kBlockHeaderBytes);
  if (!first || !first->IsIFrame()) return false;
  // The first block of a file carries the moment of the creation until it is closed.
  const bool untouched = header.m_previous == kNoBlock && header.m_next == kNoBlock;
  return untouched || first->m_time_stamp == header.m_time_stamp;
}

bool RecordingBytes::IsBlock(ULONGLONG offset, DWORD previous) {
  const auto bytes = m_near.At(offset, kBlockHeaderBytes);
  if (!HasBlockShape(bytes, offset)) return false;
  const auto header = BlockHeader::Parse(bytes.first<kBlockHeaderBytes>());
  if (previous != kNoBlock && header.m_previous == previous) return true;
  if (header.m_next == kNoBlock && offset + kBlockHeaderBytes == m_length) return true;
  if (StartsWithFrameOf(offset, header)) return true;
  const auto next = header.m_next < m_length ? BlockAt(header.m_next) : std::nullopt;
  return next && next->m_previous == offset;
}

bool RecordingBytes::IsFrameRun(ULONGLONG offset, ULONGLONG limit) {
  std::optional<DWORD> stamp;
  for (int frames = 0; frames < kConvincingFrames; ++frames) {
    if (frames > 0 && (offset == limit || IsBlock(offset, kNoBlock))) return true;
    const bool cut_off = limit == m_length && limit - offset < kVoicedFrameHeaderBytes;
    const auto header = FrameAt(offset);
    if (!header) return frames > 0 && cut_off;
    if (stamp && !StampsFit(*stamp, header->m_time_stamp)) return false;
    stamp = header->m_time_stamp;
    offset += header->TotalBytes();
    if (offset > limit) return frames > 0 && limit == m_length;
  }
  return true;
}

bool RecordingBytes::IsFilledByFrames(ULONGLONG offset, DWORD frames, ULONGLONG end) {
  for (; frames > 0 && offset < end; --frames) {
    const auto header = AnyFrameAt(offset);
    if (!header || header->m_video_bytes > kMaxFramePartBytes ||
        header->m_speech_bytes > kMaxFramePartBytes) {
      return false;
    }
    offset += header->TotalBytes();
  }
  return frames == 0 && offset == end;
}

ULONGLONG RecordingBytes::FindSync(ULONGLONG offset, ULONGLONG limit) {
  for (; offset + kFrameHeaderBytes <= limit; ++offset) {
    const auto header = FrameHeader::Parse(m_near.At(offset, kVoicedFrameHeaderBytes));
    if (header && LooksLikeFrame(*header) && IsFrameRun(offset, limit)) return offset;
    if (IsBlock(offset, kNoBlock)) return offset;
  }
  return limit;
}

}  // namespace zebtool
