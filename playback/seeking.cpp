#include "playback/seeking.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "capture/video_data.h"
#include "playback/played_file.h"
#include "playback/played_stream.h"
#include "record/zeb_file.h"

namespace zebx {

namespace {

constexpr FramePosition kBeginning = {0, 0};

bool ReadNextFrame(CVideoData& frame, CZebFile& file) {
  return file.ReadOneFrame(&frame, kNextFrame, 0) != 0;
}

FramePosition ReadingPosition(const CZebFile& file) {
  FramePosition position;
  file.GetFilePos(position.m_block, position.m_frame);
  return position;
}

// The first block that begins later than the time. The empty block at the end of a finished file
// counts: it tells when the file was closed.
std::optional<int> FindLaterBlock(const CZebFile& file, CTime time) {
  for (int block = 0; block < file.GetTotalBlock(); ++block) {
    if (file.GetBlockTime(block) > time) return block;
  }
  return std::nullopt;
}

// How many frames of the block, from its first one on, are earlier than the time. Nothing behind
// the block is read. Nothing when a read fails.
std::optional<int> CountFramesBefore(CVideoData& frame, CZebFile& file, int block, CTime time) {
  const int frames = file.GetFrameNumOfBlock(block);
  int count = 0;
  bool is_read = file.ReadOneFrame(&frame, block, 0) != 0;
  while (is_read && count < frames && file.GetTime(frame.GetTimeStamp()) < time) {
    if (++count < frames) is_read = ReadNextFrame(frame, file);
  }
  return is_read ? std::optional(count) : std::nullopt;
}

}  // namespace

void FramePosition::ForgetZeros() {
  if (m_block == 0) m_block = kNoSeek;
  if (m_frame == 0) m_frame = kNoSeek;
}

bool SeekTo(CVideoData& frame, CZebFile& file, NxcHandle decoder, FramePosition target) {
  if (file.ReadOneFrame(&frame, target.m_block, 0) == 0) return false;
  for (int next = 1; next < target.m_frame; ++next) {
    DecodeFrame(decoder, frame);
    if (!ReadNextFrame(frame, file)) return false;
  }
  return true;
}

std::optional<FramePosition> StepBack(const CZebFile& file) {
  const auto [block, next] = ReadingPosition(file);
  if (next > 2) return FramePosition{block, next - 2};
  if (block == 0) return std::nullopt;
  // With the next frame as the first but one of its block, the last one of the block before is on
  // the screen.
  const int frames = file.GetFrameNumOfBlock(block - 1);
  return FramePosition{block - 1, std::max(next == 1 ? frames - 1 : frames - 2, 0)};
}

TimeSearch FindTime(CVideoData& frame, CZebFile& file, CTime begin_time, CTime time) {
  if (time < begin_time) return {1, kBeginning, true};
  const std::optional<int> later = FindLaterBlock(file, time);
  if (!later) return {};
  // On purpose not the end of the mode.
  if (*later == 0) return {1, kBeginning, false};

  const FramePosition before = ReadingPosition(file);
  const int block = *later - 1;
  const std::optional<int> count = CountFramesBefore(frame, file, block, time);
  if (!count) return {0, before, false};
  return {1, FramePosition{block, *count}, true};
}

DWORD FrameInterval(DWORD before, DWORD now, int speed) {
  constexpr DWORD kBackwards = 0x80000000;
  const DWORD recorded_ms = now - before;
  if (recorded_ms >= kBackwards) return 0;
  const auto factor = static_cast<ULONGLONG>(2 * std::abs(LONGLONG{speed}));
  if (speed > 0) return static_cast<DWORD>(recorded_ms / factor);
  if (speed == 0) return recorded_ms;
  return static_cast<DWORD>(
      std::min<ULONGLONG>(recorded_ms * factor, std::numeric_limits<DWORD>::max()));
}

}  // namespace zebx
