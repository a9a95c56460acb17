// Where a player goes next: frames by position, one step back, moments, and the pace.
#pragma once

#include <optional>

#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "platform/noxcodec/noxcodec.h"

class CVideoData;
class CZebFile;

namespace zebx {

inline constexpr int kNoSeek = -1;

// A block and a frame in it. As the target of a seek the frame is one more than the one that is
// shown; 0 and 1 both show the first.
struct FramePosition {
  int m_block = kNoSeek;
  int m_frame = kNoSeek;

  bool operator==(const FramePosition&) const = default;
  bool IsSeek() const { return m_block >= 0; }
  // A position of 0 is the file's beginning, where reading stands anyway.
  void ForgetZeros();
};

// Carries a seek out: reads the first frame of the block, then decodes and reads on, without
// showing anything, until the frame with index m_frame - 1 is in `frame`. A frame of -1 counts as
// 0; a frame beyond its block runs on into the next. False when a read fails.
bool SeekTo(CVideoData& frame, CZebFile& file, NxcHandle decoder, FramePosition target);

// The seek that shows the frame before the one on the screen. Reading stands two frames past that
// one, which is what it goes by. Nothing when there is nothing earlier.
std::optional<FramePosition> StepBack(const CZebFile& file);

// The outcome of a search for the last frame before a moment.
struct TimeSearch {
  int m_result = 0;                     // 1: found
  std::optional<FramePosition> m_seek;  // set also when a read failed: back to where reading stood
  bool m_ends_mode = false;             // whether the mode that silences sound ends
};

// Searches a file for a moment before its end time, moving where reading stands; `frame` takes what
// is read: of the block in which the moment lies, and nothing else. A moment before the begin time
// is the file's beginning; one inside the last block is not found. A finished file ends with a
// block without frames, so that this holds only for one that is still being written.
TimeSearch FindTime(CVideoData& frame, CZebFile& file, CTime begin_time, CTime time);

// Milliseconds for which a frame stays on the screen when the next one's stamp is `now`: the
// recorded interval at speed 0, divided by 2n at speed n, multiplied by 2n at speed -n, at most
// 2^32 - 1. Stamps that go backwards, by up to 2^31, are no interval.
DWORD FrameInterval(DWORD before, DWORD now, int speed);

}  // namespace zebx
