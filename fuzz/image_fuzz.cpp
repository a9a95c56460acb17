// Arbitrary bytes as a snapshot file, bare and behind a good picture, so that the trailer is
// reached: loaded and saved within the memory they have.
#include <cstdlib>
#include <string>

#include "image/image.h"
#include "tests/support/memory_file_system.h"

extern "C" int LLVMFuzzerTestOneInput(const BYTE* bytes, std::size_t size) {
  constexpr DWORD kSide = 4;
  const std::string input(bytes, bytes + size);
  MemoryFileSystem disk;
  disk.Put("in", input);
  CImage image;
  image.LoadImageAs(kImageBmp, "in");
  image.SaveImageAs(kImageBmp, "out.bmp");

  CImage good;
  good.CreateImage(new BYTE[kSide * kSide * 3](), kSide, kSide);
  good.SaveImageAs(kImageBmp, "good.bmp");
  disk.Put("in", disk.Get("good.bmp") + input);
  if (image.LoadImageAs(kImageBmp, "in") == 0) std::abort();
  image.SaveImageAs(kImageBmp, "out.bmp");
  // What was understood is written so that it is understood again.
  if (good.LoadImageAs(kImageBmp, "out.bmp") == 0 || good.GetHostName() != image.GetHostName() ||
      good.GetGmt() != image.GetGmt()) {
    std::abort();
  }
  return 0;
}
