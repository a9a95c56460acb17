// Arbitrary bytes as a snapshot file, bare and behind a good picture, so that the trailer is
// reached: loaded and saved within the memory they have.
#include <cstdlib>
#include <string>

#include "fuzz/sparse_disk.h"
#include "image/image.h"

extern "C" int LLVMFuzzerTestOneInput(const BYTE* bytes, std::size_t size) {
  constexpr DWORD kSide = 4;
  const SparseBytes input = SparseBytes::Of({bytes, size}, kSmallGapBytes);
  SparseDisk disk;
  disk.PutSparse("in", input);
  CImage image;
  image.LoadImageAs(kImageBmp, "in");
  image.SaveImageAs(kImageBmp, "out.bmp");

  CImage good;
  good.CreateImage(new BYTE[kSide * kSide * 3](), kSide, kSide);
  good.SaveImageAs(kImageBmp, "good.bmp");
  disk.PutSparse("in", input.Behind(disk.Get("good.bmp")));
  if (image.LoadImageAs(kImageBmp, "in") == 0) std::abort();
  image.SaveImageAs(kImageBmp, "out.bmp");
  // What was understood is written so that it is understood again.
  if (good.LoadImageAs(kImageBmp, "out.bmp") == 0 || good.GetHostName() != image.GetHostName() ||
      good.GetGmt() != image.GetGmt()) {
    std::abort();
  }
  return 0;
}
