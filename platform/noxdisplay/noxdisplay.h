// The display library: drawing of pictures, the watermark, and surfaces that can be lost. Its
// streams are in streams.h. The library links against these functions only; any display that
// implements them can stand in for the software one.
//
// Every function answers 0 for success and another value for failure, unless it says otherwise.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/types.h"

extern "C" {

// Sets the watermark of all pictures: 24-bit rows from the bottom up, each padded to a multiple of
// 4 bytes, `bytes` of them in all. The pixels are copied. Fails, the watermark before staying in
// force, for null, an empty size, and when `bytes` is not what the size takes.
ZEBX_API int noxshowSetWatermark(const BYTE* pixels, DWORD bytes, DWORD width, DWORD height);

// Non-zero when the surfaces of the display were lost; nothing is shown then until noxshowRestore
// brings them back.
ZEBX_API int noxshowIsLost();
ZEBX_API int noxshowRestore();

// Draws a 24-bit picture, scaled, onto a rectangle of a context. `picture` holds rows of width * 3
// bytes without padding, the bottom row first. An empty rectangle draws nothing. Fails for null, an
// empty or negative size, a rectangle turned inside out, and a context that cannot be drawn into.
ZEBX_API int noxshowDrawDib(const BYTE* picture, const CSize* size, HDC dc, const CRect* target);
}
