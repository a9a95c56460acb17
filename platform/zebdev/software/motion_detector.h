// Finds motion in areas of successive pictures.
#pragma once

#include <span>
#include <vector>

#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/zebdev/device_records.h"

namespace zebx::zebdev {

// Compares each picture with the one before it. Used by one thread at a time; takes memory only for
// the first picture of a size.
class MotionDetector {
 public:
  MotionDetector() { SetSensitivity(kDefaultSensitivity); }

  static constexpr DWORD kMaxSensitivity = 16;
  static constexpr DWORD kDefaultSensitivity = 8;
  static constexpr std::size_t kMaxAreas = 32;

  // From 0, which takes a large change of brightness, to kMaxSensitivity; above counts as that.
  void SetSensitivity(DWORD sensitivity);

  // Bit n of the answer: something moved in area n since the picture before. Areas are in
  // macroblocks, their right and bottom ends excluded; what lies outside the picture is not looked
  // at, nor is an area after the first kMaxAreas. None moves in the first picture after Forget, and
  // in the first one of another size.
  DWORD Look(const noxcodec::PictureView& picture, std::span<const tag_MASKAREA> areas);

  // The next picture is not compared with what was seen so far: the video was lost, or nobody
  // looked for a while.
  void Forget() { m_has_picture = false; }

 private:
  void MeasureCells(const noxcodec::PlaneView& luma);
  bool HasMotion(const tag_MASKAREA& area) const;

  int m_threshold;  // of the difference of two cells
  bool m_has_picture = false;
  DWORD m_columns = 0;  // of macroblocks
  DWORD m_rows = 0;
  // Sums of luma over cells of 8 x 8 pixels, four to a macroblock, in which a camera's noise
  // cancels out: of the picture before, and of this one.
  std::vector<WORD> m_before;
  std::vector<WORD> m_now;
  std::vector<WORD> m_column_sums;
  std::vector<BYTE> m_moved;  // by cell: 1 when the two differ
};

}  // namespace zebx::zebdev
