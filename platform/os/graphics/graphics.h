// Drawing over pictures in memory: device contexts, bitmaps, and copying pictures at any size.
//
// A device context is a place to draw into: a window's picture, a bitmap selected into a memory
// context, or the screen, which only tells what is compatible with it and refuses to be drawn into.
// Handles are never used again, so that a stale one is refused. What runs out of memory fails and
// leaves no handle behind. Handles may be made and given back
// on any thread; a context and the bitmap in it are used by one thread at a time.
#pragma once

#include <span>

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/types.h"
#include "platform/os/graphics/dib_format.h"
#include "platform/os/graphics/stretch_mode.h"

namespace os {

// Raster operations: how a source pixel is combined with what it covers. Every other one is
// refused.
inline constexpr DWORD kSrcCopy = 0x00CC0020;

// StretchDIBits' result for a failure.
inline constexpr int kGdiError = -1;
// GetPixel's result outside a picture.
inline constexpr DWORD kNoPixel = 0xFFFFFFFF;

// The context of a window, or of the screen for null; null for a stale window. Every one is given
// back by ReleaseDC; the screen has only one, which need not be.
ZEBX_API HDC GetDC(HWND window);
// 1, or 0 when the context is not one of this window's.
ZEBX_API int ReleaseDC(HWND window, HDC dc);

// A memory context without a bitmap. `dc` is any context; null for a stale one.
ZEBX_API HDC CreateCompatibleDC(HDC dc);
// 1, or 0 for what is no memory context. A bitmap selected into it is free again.
ZEBX_API int DeleteDC(HDC dc);

// Puts a bitmap into a memory context, or takes the present one out for null. The bitmap that was
// in it, null for none and for one that was deleted meanwhile; null also, with nothing changed, for
// a stale handle, another kind of context and a bitmap that is in a context already.
ZEBX_API HBITMAP SelectObject(HDC dc, HBITMAP bitmap);

// A bitmap in the form of a DIB, all pixels and colours 0. `*bits` gets its pixel rows, in the
// order that the header says: valid until the bitmap is deleted. Null, with `*bits` untouched, for
// a stale context, a bit count other than 1, 4, 8, 16, 24 or 32, a compressed or empty picture, and
// one of more than 512 MB.
ZEBX_API HBITMAP CreateDIBSection(HDC dc, const BitmapInfoHeader& header, std::span<BYTE>* bits);
// A bitmap of the screen's own form with the pixels of a DIB, its colours as a colour table. Null
// as above, and when `bits` holds fewer bytes than the picture takes.
ZEBX_API HBITMAP CreateDIBitmap(HDC dc, const BitmapInfoHeader& header, std::span<const BYTE> bits,
                                std::span<const BYTE> color_table);
// Deletes a bitmap. 1, or 0 for a stale handle and for one that is selected into a context.
ZEBX_API int DeleteObject(HBITMAP bitmap);
// Deletes a bitmap wherever it is: the handle is stale from then on, and one that is selected into
// a context can be drawn into until it is taken out. 1, or 0 for a stale handle.
ZEBX_API int DeleteObjectWhenFree(HBITMAP bitmap);
// 1, or 0 for a stale handle.
ZEBX_API int GetBitmapSize(HBITMAP bitmap, CSize* size);

// Reads a bitmap, whether it is selected into a context or not: `pixels` gets 4 bytes for each
// pixel, blue, green, red and 0, row by row from the top. 1, or 0 with nothing read for a stale
// handle and when `pixels` has not one word for each pixel.
ZEBX_API int GetBitmapPixels(HBITMAP bitmap, std::span<DWORD> pixels);

// Replaces colours of the bitmap in a memory context, from index `first` on; `colors` as in a
// colour table. The number replaced: 0 when the bitmap has no colour table.
ZEBX_API UINT SetDIBColorTable(HDC dc, UINT first, std::span<const BYTE> colors);

// How later copies into this context drop pixels. 1, or 0 for a stale context.
ZEBX_API int SetStretchBltMode(HDC dc, StretchMode mode);

// Copies a rectangle of one context onto a rectangle of another. What lies outside either picture
// is left out; an empty rectangle copies nothing. 1, or 0 with nothing drawn for a stale context,
// the screen, a memory context without a bitmap, a negative size and another raster operation.
ZEBX_API int StretchBlt(HDC to, int x, int y, int width, int height, HDC from, int source_x,
                        int source_y, int source_width, int source_height, DWORD raster_operation);
// Copies a rectangle of a DIB likewise. With the bottom row first in `bits`, source_y counts rows
// up from the bottom of the picture, as the DIB's own coordinates do. The number of rows of the
// DIB, or kGdiError with nothing drawn for what CreateDIBitmap and StretchBlt refuse.
ZEBX_API int StretchDIBits(HDC to, int x, int y, int width, int height, int source_x, int source_y,
                           int source_width, int source_height, std::span<const BYTE> bits,
                           const BitmapInfoHeader& header, std::span<const BYTE> color_table,
                           DWORD raster_operation);
// Drawing is done when a call returns: nothing is ever waiting.
inline void GdiFlush() {}

// The colour of a pixel as 0x00BBGGRR, or kNoPixel.
ZEBX_API DWORD GetPixel(HDC dc, int x, int y);

}  // namespace os
