// Pictures as pixels of red, green and blue, at any size: still pictures and live ones.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/noxcodec/software/picture_scaler.h"

namespace zebx::zebdev {

// Scales and converts pictures one after the other. Takes memory only when sizes change; used by
// one thread at a time.
class PicturePixels {
 public:
  // Writes `height` rows of `width` pixels of 24 bits, BGR. With a positive row step the top row
  // comes first; a negative one stores the rows bottom-up inside the same buffer, the lowest first.
  // 1, or 0 with nothing written for a size that is not positive or above kMaxSide, a step of less
  // than a row, and a buffer that does not hold `height` steps.
  int WriteBgr(const noxcodec::PictureView& picture, int width, int height, LONG row_step_bytes,
               std::span<BYTE> pixels);

  // Writes `height` rows of `width` pixels of 32 bits, BGRX, `pitch_bytes` from one row to the
  // next: negative to go backwards from `first_row`. Both are positive and at most kMaxSide; a
  // pitch is at least a row.
  void WriteBgrx(const noxcodec::PictureView& picture, int width, int height, BYTE* first_row,
                 std::ptrdiff_t pitch_bytes);

  static constexpr int kMaxSide = 16384;

 private:
  noxcodec::PictureView Fitted(const noxcodec::PictureView& picture, int width, int height);

  noxcodec::PictureScaler m_scaler;
  noxcodec::Picture m_scaled;
  std::vector<BYTE> m_row;
};

}  // namespace zebx::zebdev
