// Arbitrary bytes as a Y4M file that a channel plays: its pictures one after the other, over its
// end, and after a while in which nobody looked.
#include <cstdlib>

#include "fuzz/sparse_disk.h"
#include "platform/zebdev/software/y4m_loop.h"

using namespace zebx;

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  SparseDisk disk;
  disk.PutSparse("in", SparseBytes::Of({data, size}, kSmallGapBytes));
  zebdev::Y4mLoop video;
  if (!video.Open("in").empty()) return 0;
  constexpr ULONGLONG kPeriodMs = 40;
  constexpr ULONGLONG kDayMs = 86400000;
  for (const ULONGLONG begin_ms : {ULONGLONG{0}, kDayMs}) {
    for (ULONGLONG period = 0; period < 10; ++period) {
      const noxcodec::Picture* const picture = video.PictureAt(begin_ms + period * kPeriodMs);
      if (picture == nullptr) continue;
      const auto pixels =
          static_cast<ULONGLONG>(picture->Width()) * static_cast<ULONGLONG>(picture->Height());
      if (pixels > zebdev::kY4mMaxPixels) std::abort();
    }
  }
  return 0;
}
