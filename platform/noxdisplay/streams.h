// The display library's streams of pictures with captions and marks, and the pictures registered
// with it. The library calls none of this yet and the software display does not have it, so a
// display library need not either.
//
// Results are those of noxdisplay.h. A stream is used by one thread at a time; different streams
// are independent.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

// A stream: a surface that a decoder writes its pictures into, on their way to a window. Created
// and destroyed here, borrowed everywhere else.
using NoxshowStream = struct NoxshowStreamState*;

// The display record: 476 bytes with what is drawn around and over a picture. Flags, the caption
// rectangle, up to five mask rectangles with their motion and alarm marks, and the camera, board,
// clock, begin and end texts with their colours.
struct tag_DISPLAYINFO;
// What noxshowGetPicture fills: a format word, the address of a buffer of width * height * 3 bytes,
// three words of 0, width and height in pixels, and the pitch in bytes, negative for rows from the
// bottom up. The address is as wide as a pointer.
struct tag_PICTUREDESC;
// What noxshowLock fills. The second word is the address of the surface's pixels, 32 bits each, and
// the third the distance of its rows in bytes. Address and words are as wide as a pointer.
struct tag_SURFACELOCK;

// A picture size in pixels.
struct NoxshowSize {
  DWORD m_width;
  DWORD m_height;
};

// What a stream's surface is made of. Callers ask for the first and fall back to the second.
enum : DWORD { kNoxshowOverlaySurface = 3, kNoxshowPlainSurface = 1 };

// Numbers of the pictures that noxshowSetBitmap registers.
enum : DWORD {
  kNoxshowWorkingPicture = 0x0001,
  kNoxshowProgramPicture = 0x0010,
  kNoxshowActivePicture = 0x0020,
  kNoxshowAlarmPicture = 0x0040,
  kNoxshowRecordPicture = 0x0200,
  kNoxshowAudioPicture = 0x0400,
  kNoxshowVideoLostPicture = 0x0800,
  kNoxshowIdlePicture = 0x1000,
};

extern "C" {

// Creates a stream whose surface has `size` pixels, in one of the modes above. `info` may be null
// and is borrowed for the call. `*stream` is set only on success.
ZEBX_API int noxshowCreateStream(NoxshowStream* stream, const NoxshowSize* size, DWORD mode,
                                 const tag_DISPLAYINFO* info);
// Destroys a stream. Null is ignored.
ZEBX_API int noxshowDestroyStream(NoxshowStream stream);

// Non-zero when the stream's surface was lost: its picture is gone, and it takes none until
// noxshowRestoreSurface brings it back.
ZEBX_API int noxshowIsSurfaceLost(NoxshowStream stream);
ZEBX_API int noxshowRestoreSurface(NoxshowStream stream);

// Gives the writable pixels of the stream's surface, valid until noxshowUnlock. A failure leaves
// `*lock` untouched.
ZEBX_API int noxshowLock(NoxshowStream stream, tag_SURFACELOCK* lock);
ZEBX_API int noxshowUnlock(NoxshowStream stream);

// Presents the surface in a window, scaled to it, with the record's texts in their colours, marks
// and mask outlines. With `info` null, those presented last are used.
ZEBX_API int noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info);
// Fills the descriptor's buffer with the shown picture, scaled to the descriptor's size.
ZEBX_API int noxshowGetPicture(NoxshowStream stream, const tag_PICTUREDESC* picture);

// Draws a registered picture into a window. Bit 2 of `flags` marks the window as the active one;
// other bits mean nothing.
ZEBX_API int noxshowBitmap(HWND window, DWORD picture_number, DWORD flags);
// Registers a picture under its number, replacing what was there. The pixels are copied: the bitmap
// stays the caller's.
ZEBX_API int noxshowSetBitmap(HBITMAP bitmap, DWORD picture_number);
}
