#include "recovery/recording_bytes.h"

#include <algorithm>
#include <array>
#include <bit>

#include "platform/framework/file.h"
#include "recovery/frame_signs.h"

namespace zebx {
namespace {

constexpr std::size_t kSearchBytes = 64 * 1024;
// So many frames in a row are no accident.
constexpr int kConvincingFrames = 3;
// A run is given up behind so many frames: none of them convinces, or the end is too far.
constexpr int kMostFramesOfRun = 64;
// So many in a row, each at the time of the one before it, are more than a payload holds by chance.
constexpr int kFirmFrames = 8;

// What every block header keeps, before anything around it is looked at.
bool HasBlockShape(std::span<const BYTE> bytes, ULONGLONG offset) {
  if (bytes.size() < kBlockHeaderBytes) return false;
  if (bytes[BlockHeader::kReservedAt] != 0 || bytes[BlockHeader::kReservedAt + 1] != 0) {
    return false;
  }
  const auto header = BlockHeader::Parse(bytes.first<kBlockHeaderBytes>());
  const bool open = header.m_next == kNoBlock && header.m_frames == 0;
  const bool closed = header.m_next != kNoBlock && header.m_frames > 0 &&
                      header.m_next > offset + kBlockHeaderBytes;
  const bool linked = header.m_previous == kNoBlock || header.m_previous < offset;
  return (open || closed) && linked;
}

// More than that it follows: numbers that repeat themselves make frames that do, too.
bool IsSurelyBehind(const FrameHeader& ahead, const FrameHeader& header) {
  return Follows(ahead, header) && header.m_time_stamp != ahead.m_time_stamp &&
         ((header.m_flags ^ ahead.m_flags) & kFrameRT) == 0;
}

}  // namespace

std::span<const BYTE> ByteWindow::At(ULONGLONG offset, std::size_t count) {
  if (!Holds(offset, count)) {
    m_file.Seek(offset);
    m_start = offset;
    m_filled = m_file.Read(m_buffer);
  }
  const auto filled = std::span<const BYTE>(m_buffer).first(m_filled);
  return filled.subspan(std::min<std::size_t>(offset - m_start, m_filled))
      .first(std::min<std::size_t>(count, m_start + m_filled - offset));
}

RecordingBytes::RecordingBytes(CFile& file, ProgressMeter& progress)
    : m_length(file.GetLength()),
      m_progress(progress),
      m_near(file, kSearchBytes),
      m_far(file, kVoicedFrameHeaderBytes) {}

std::span<const BYTE> RecordingBytes::Bytes(ULONGLONG offset, std::size_t count) {
  return m_near.Holds(offset, count) ? m_near.At(offset, count) : m_far.At(offset, count);
}

std::optional<BlockHeader> RecordingBytes::BlockAt(ULONGLONG offset) {
  const auto bytes = Bytes(offset, kBlockHeaderBytes);
  if (bytes.size() < kBlockHeaderBytes) return std::nullopt;
  return BlockHeader::Parse(bytes.first<kBlockHeaderBytes>());
}

std::optional<FrameHeader> RecordingBytes::AnyFrameAt(ULONGLONG offset) {
  return FrameHeader::Parse(Bytes(offset, kVoicedFrameHeaderBytes));
}

std::optional<FrameHeader> RecordingBytes::FrameAt(ULONGLONG offset) {
  const auto header = AnyFrameAt(offset);
  return header && LooksLikeFrame(*header) ? header : std::nullopt;
}

std::vector<FrameHeader> RecordingBytes::NearFramesAt(ULONGLONG offset) {
  constexpr std::size_t kStampAt = 4;
  std::vector<FrameHeader> near;
  std::array<BYTE, kVoicedFrameHeaderBytes> bytes{};
  const auto there = Bytes(offset, bytes.size());
  std::ranges::copy(there, bytes.begin());
  for (std::size_t at = 0; at < there.size(); ++at) {
    if (at >= kStampAt && at < kStampAt + sizeof(DWORD)) continue;
    for (unsigned bit = 1; bit <= 0x80; bit <<= 1) {
      bytes[at] = static_cast<BYTE>(bytes[at] ^ bit);
      const auto header = FrameHeader::Parse(std::span(bytes).first(there.size()));
      bytes[at] = static_cast<BYTE>(bytes[at] ^ bit);
      if (header && LooksLikeFrame(*header)) near.push_back(*header);
    }
  }
  return near;
}

bool RecordingBytes::StartsWithFrameOf(ULONGLONG block_offset, const BlockHeader& header) {
  const auto first = FrameAt(block_offset + kBlockHeaderBytes);
  if (!first || !first->IsIFrame()) return false;
  // The first block of a file carries the moment of the creation until it is closed.
  const bool untouched = header.m_previous == kNoBlock && header.m_next == kNoBlock;
  return untouched || first->m_time_stamp == header.m_time_stamp;
}

bool RecordingBytes::IsPointedBackAt(ULONGLONG offset, const BlockHeader& header) {
  const auto next = header.m_next < m_length ? BlockAt(header.m_next) : std::nullopt;
  return next && next->m_previous == offset;
}

bool RecordingBytes::IsNextOf(DWORD previous, ULONGLONG offset, const BlockHeader& header) {
  if (previous == kNoBlock || header.m_previous != previous) return false;
  const auto block = BlockAt(previous);
  if (!block) return false;
  // A new block reaches the disk before the header of the one that it ends.
  if (block->m_next == kNoBlock) return header.m_next == kNoBlock;
  return std::popcount(block->m_next ^ offset) <= 1;
}

bool RecordingBytes::IsBlock(ULONGLONG offset, DWORD previous) {
  const auto bytes = m_near.At(offset, kBlockHeaderBytes);
  if (!HasBlockShape(bytes, offset)) return false;
  const auto header = BlockHeader::Parse(bytes.first<kBlockHeaderBytes>());
  if (previous != kNoBlock && header.m_previous == previous) return true;
  if (header.m_next == kNoBlock && offset + kBlockHeaderBytes == m_length) return true;
  return StartsWithFrameOf(offset, header) || IsPointedBackAt(offset, header);
}

bool RecordingBytes::IsBlockOfChain(ULONGLONG offset, DWORD previous) {
  const auto header = BlockAt(offset);
  if (!header) return false;
  if (header->m_previous == previous) return true;
  if (offset + kBlockHeaderBytes == m_length) return true;
  const auto first = FrameAt(offset + kBlockHeaderBytes);
  return first && first->IsIFrame();
}

bool RecordingBytes::IsFrameRun(ULONGLONG offset, ULONGLONG limit,
                                std::optional<DWORD> last_stamp) {
  int convincing = 0;
  bool is_rising = true;
  std::optional<DWORD> stamp;
  for (int frames = 0; frames < kMostFramesOfRun; ++frames) {
    // Short runs convince by their place in time, others by going on: a single frame without such a
    // place may be anything.
    const bool in_time = last_stamp ? !stamp || StampsFit(*last_stamp, *stamp) : convincing > 1;
    if (convincing > 0 && in_time && (offset == limit || IsBlock(offset, kNoBlock))) return true;
    const bool cut_off = limit == m_length && limit - offset < kVoicedFrameHeaderBytes;
    const auto header = FrameAt(offset);
    if (!header) return convincing > 0 && in_time && cut_off;
    if (stamp && !StampsFit(*stamp, header->m_time_stamp)) return false;
    is_rising = is_rising && (!stamp || header->m_time_stamp != *stamp);
    stamp = header->m_time_stamp;
    offset += header->TotalBytes();
    if (offset > limit) return convincing > 0 && in_time && limit == m_length;
    if (HasContents(*header)) ++convincing;
    if (convincing == kConvincingFrames && (is_rising || (last_stamp && in_time))) return true;
  }
  return false;
}

bool RecordingBytes::IsFilledByFrames(ULONGLONG offset, DWORD frames, ULONGLONG end) {
  std::optional<DWORD> stamp;
  for (; frames > 0 && offset < end; --frames) {
    const auto header = AnyFrameAt(offset);
    if (!header || header->m_video_bytes > kMaxFramePartBytes ||
        header->m_speech_bytes > kMaxFramePartBytes) {
      return false;
    }
    // Zeros within a frame can make up for one whose length is damaged.
    const bool in_time = !stamp || StampsFit(*stamp, header->m_time_stamp);
    if (!HasContents(*header) && !in_time) return false;
    stamp = header->m_time_stamp;
    offset += header->TotalBytes();
  }
  return frames == 0 && offset == end;
}

ULONGLONG RecordingBytes::FindSync(ULONGLONG offset, ULONGLONG limit,
                                   std::optional<DWORD> last_stamp) {
  for (; offset + kFrameHeaderBytes <= limit && Pass(offset); ++offset) {
    const auto header = FrameHeader::Parse(m_near.At(offset, kVoicedFrameHeaderBytes));
    if (header && LooksLikeFrame(*header) && IsFrameRun(offset, limit, last_stamp)) return offset;
    if (IsBlock(offset, kNoBlock)) return offset;
  }
  return limit;
}

ULONGLONG RecordingBytes::FindChainedBlock(ULONGLONG offset, DWORD previous) {
  for (; offset + kBlockHeaderBytes <= m_length && Pass(offset); ++offset) {
    const auto bytes = m_near.At(offset, kBlockHeaderBytes);
    if (!HasBlockShape(bytes, offset)) continue;
    const auto header = BlockHeader::Parse(bytes.first<kBlockHeaderBytes>());
    if (IsNextOf(previous, offset, header) || IsPointedBackAt(offset, header)) return offset;
  }
  return m_length;
}

ULONGLONG RecordingBytes::FindRunAcross(ULONGLONG begin, ULONGLONG end, ULONGLONG limit,
                                        DWORD stamp) {
  for (; begin < end && Pass(begin); ++begin) {
    const auto header = FrameHeader::Parse(m_near.At(begin, kVoicedFrameHeaderBytes));
    if (header && LooksLikeFrame(*header) && LeadsAcross(begin, end, limit, stamp)) return begin;
  }
  return end;
}

bool RecordingBytes::LeadTo(ULONGLONG offset, ULONGLONG end, std::optional<FrameHeader> ahead) {
  while (offset < end) {
    const auto header = FrameAt(offset);
    if (!header || !HasContents(*header) || (ahead && !IsSurelyBehind(*ahead, *header))) {
      return false;
    }
    if (ahead) ahead = header;
    offset += header->TotalBytes();
  }
  const auto behind = FrameAt(end);
  return offset == end && (!ahead || !behind || IsBlock(end, kNoBlock) || Follows(*ahead, *behind));
}

bool RecordingBytes::LeadOn(ULONGLONG offset, ULONGLONG limit, FrameHeader ahead) {
  for (int frames = 0; frames < kFirmFrames; ++frames) {
    if (offset == limit || IsBlock(offset, kNoBlock)) return true;
    const auto header = FrameAt(offset);
    if (!header || !HasContents(*header) || !IsSurelyBehind(ahead, *header)) return false;
    ahead = *header;
    offset += header->TotalBytes();
  }
  return offset <= limit;
}

bool RecordingBytes::LeadsAcross(ULONGLONG offset, ULONGLONG end, ULONGLONG limit, DWORD stamp) {
  for (int frames = 0; frames < kMostFramesOfRun; ++frames) {
    const auto header = FrameAt(offset);
    if (!header || !HasContents(*header) || !StampsFit(stamp, header->m_time_stamp)) {
      return offset > end && (offset == limit || IsBlock(offset, kNoBlock));
    }
    if (offset > end) return true;
    stamp = header->m_time_stamp;
    offset += header->TotalBytes();
    if (offset > limit) return false;
  }
  return true;
}

}  // namespace zebx
