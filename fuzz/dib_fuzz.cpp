// Arbitrary bytes as a BMP file and as a bitmap resource: loaded, saved, converted and drawn within
// the memory they have.
#include <algorithm>
#include <string>

#include "fuzz/sparse_disk.h"
#include "image/bmp_format.h"
#include "image/dib_obj.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "platform/os/graphics/graphics.h"

using namespace zebx;

namespace {

constexpr UINT kResource = 1;
constexpr DWORD kOutputBitCount = 24;

void Exercise(CDibObj& dib, HDC canvas) {
  const BYTE* const data = dib.GetData();
  static_cast<void>(std::count(data, data + dib.GetDataSize(), BYTE{0}));
  dib.SaveBmp("saved");
  dib.Display(canvas, 0, 0, os::kSrcCopy);
  dib.Display(canvas, -3, -3, 9, 9, 1, 1, 5, 5, os::kSrcCopy);
  os::DeleteObject(dib.CreateBitmap());
  dib.ConvertFormat(7, 5, kOutputBitCount);
  dib.ConvertFormat(dib.GetWidth(), 3, kOutputBitCount);
}

// A header and whatever bytes follow it, handed to the graphics by a host that checks nothing.
void DrawBytes(std::span<const BYTE> bytes, HDC canvas) {
  constexpr std::size_t kHeaderBytes = os::BitmapInfoHeader::kBytes;
  if (bytes.size() < kBmpFileHeaderBytes + kHeaderBytes) return;
  bytes = bytes.subspan(kBmpFileHeaderBytes);
  const auto header = os::BitmapInfoHeader::Parse(bytes.first<kHeaderBytes>());
  bytes = bytes.subspan(kHeaderBytes);
  os::StretchDIBits(canvas, -1, 1, 9, 9, 0, 0, header.m_width, 5, bytes, header, bytes,
                    os::kSrcCopy);
  os::DeleteObject(os::CreateDIBitmap(canvas, header, bytes, bytes));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* bytes, std::size_t size) {
  SparseDisk disk;
  disk.PutSparse("in", SparseBytes::Of({bytes, size}, kSmallGapBytes));
  os::RegisterBitmapResource(kResource, {bytes, size});

  os::BitmapInfoHeader header;
  header.m_width = header.m_height = 8;
  header.m_bit_count = kOutputBitCount;
  std::span<BYTE> bits;
  HDC canvas = os::CreateCompatibleDC(os::GetDC(nullptr));
  HBITMAP bitmap = os::CreateDIBSection(canvas, header, &bits);
  os::SelectObject(canvas, bitmap);
  DrawBytes({bytes, size}, canvas);
  CDibObj dib;
  if (dib.LoadBmp(CString("in")) == 1) Exercise(dib, canvas);
  if (dib.LoadBmp(kResource) == 1) Exercise(dib, canvas);
  os::DeleteDC(canvas);
  os::DeleteObject(bitmap);
  return 0;
}
