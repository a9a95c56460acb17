// A picture as a packed device-independent bitmap: from a BMP file or a resource to a window.
#pragma once

#include <span>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"
#include "platform/os/graphics/dib_format.h"

// Empty, or holding a DIB whose colour table and pixel rows are whole. A header of 40 bytes and
// rows with the bottom one first are taken for granted. Used by one thread at a time.
class ZEBX_API CDibObj : public CObject {
 public:
  CDibObj();
  ~CDibObj() override;
  CDibObj(const CDibObj&) = delete;
  CDibObj& operator=(const CDibObj&) = delete;

  // Both first make the object empty, and leave it so when they fail. 1, or 0 when there is no such
  // resource or file, a file is no BMP file or larger than the memory, the disk fails, and when the
  // picture's own sizes lead beyond the bytes there are. Of a file, the pixel rows are taken to
  // follow the colour table at once, wherever its header says they begin. Rows that come from the
  // top down (a negative height) are turned over, and the height with them.
  int LoadBmp(UINT resource_id);
  int LoadBmp(const CString& path);
  // Creates (or empties) the file and writes the picture as it is held. 1, or 0 for an empty object
  // and when the disk fails, which may leave part of a file.
  int SaveBmp(const CString& path) const;
  // Makes the object empty.
  void Destroy();

  // Scales the picture to width * height pixels of 24 bits; a picture that is so already stays as
  // it is. 1, or 0 with nothing changed for an empty object, a bit count other than 24, and a
  // picture or size that the system makes no bitmap of.
  int ConvertFormat(DWORD width, DWORD height, DWORD bit_count);

  // A bitmap of the screen's form with this picture; the caller deletes it (os::DeleteObject). Null
  // for an empty object, a form that the system does not know, and when memory runs out.
  HBITMAP CreateBitmap() const;

  // Draws part of the picture, or all of it unscaled, as os::StretchDIBits does: source_y counts
  // rows up from the bottom of the picture. 1, or 0 for an empty object and when drawing fails.
  int Display(HDC dc, int x, int y, int width, int height, int source_x, int source_y,
              int source_width, int source_height, DWORD raster_operation) const;
  int Display(HDC dc, const CRect& target, const CRect& source, DWORD raster_operation) const;
  int Display(HDC dc, int x, int y, DWORD raster_operation) const;

  int IsEmpty() const { return m_dib.empty() ? 1 : 0; }
  // The pixel rows, GetDataSize() bytes. Borrowed until the next load, conversion or Destroy; null
  // when empty.
  BYTE* GetData();
  const BYTE* GetData() const;

  // What the header says, or follows from it; 0 when empty.
  DWORD GetWidth() const;
  DWORD GetHeight() const;
  DWORD GetBitCount() const;
  DWORD GetColorNumbers() const;
  DWORD GetPaletteSize() const;  // bytes
  DWORD GetDataSize() const;     // bytes
  DWORD GetWidthBytes() const;   // of one padded row

  // The same of any packed DIB in memory, of which the 40 bytes of the header are looked at. Sizes
  // are modulo 2^32.
  static DWORD GetWidth(const BYTE* dib);
  static DWORD GetHeight(const BYTE* dib);
  static DWORD GetBitCount(const BYTE* dib);
  static DWORD GetColorNumbers(const BYTE* dib);
  static DWORD GetPaletteSize(const BYTE* dib);
  static DWORD GetDataSize(const BYTE* dib);
  // Bytes of one padded row of `bits`.
  static DWORD GetWidthBytes(DWORD bits);

 private:
  void PutBottomRowFirst();
  os::BitmapInfoHeader Header() const;
  std::span<const BYTE> ColorTable() const;
  std::span<const BYTE> PixelRows() const;

  std::vector<BYTE> m_dib;  // header, colour table and rows, exactly; empty for none
};
