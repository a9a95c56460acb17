// The display library's streams of pictures with captions and marks, and the pictures registered
// with it.
//
// Results are those of noxdisplay.h. Any thread may call: a picture can be copied or presented
// while the next one is written, and different streams are independent. A handle that was never
// given out, or whose stream is destroyed, is refused. docs/display.md tells what is drawn where.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

// A stream: a surface that a decoder writes its pictures into, on their way to a window. Created
// and destroyed here, borrowed everywhere else.
using NoxshowStream = struct NoxshowStreamState*;

// Described in display_record.h.
struct tag_DISPLAYINFO;
struct tag_PICTUREDESC;
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

// Creates a stream whose surface has `size` pixels, in one of the modes above. `info`, the record
// to begin with, may be null and is borrowed for the call. `*stream` is set only on success. Fails
// for another mode, and for a side of 0 or of more than 16384 pixels.
ZEBX_API int noxshowCreateStream(NoxshowStream* stream, const NoxshowSize* size, DWORD mode,
                                 const tag_DISPLAYINFO* info);
// Destroys a stream, also while other threads present or copy it; they end with what they have.
// Null is ignored. Pixels that are locked stay writable until noxshowUnlock, the only function that
// takes the handle then.
ZEBX_API int noxshowDestroyStream(NoxshowStream stream);

// Non-zero when the stream's surface was lost: its picture is gone, and it takes none until
// noxshowRestoreSurface brings it back. That fails until noxshowRestore was called.
ZEBX_API int noxshowIsSurfaceLost(NoxshowStream stream);
ZEBX_API int noxshowRestoreSurface(NoxshowStream stream);

// Gives the writable pixels of a surface, valid until noxshowUnlock makes them the stream's
// picture. They hold anything: a picture is written whole. A failure leaves `*lock` untouched; so
// it does when the surface is lost and when it is locked already.
ZEBX_API int noxshowLock(NoxshowStream stream, tag_SURFACELOCK* lock);
ZEBX_API int noxshowUnlock(NoxshowStream stream);

// Presents the stream's picture in a window, scaled to it, with the record's texts in their
// colours, marks and mask outlines. With `info` null, those given last are used. Before there is a
// picture the window gets a dark area under them. Fails, with the record kept, for a window that is
// gone or has no area.
ZEBX_API int noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info);
// Fills the descriptor's buffer with the stream's picture, without captions and marks, scaled to
// the descriptor's size. Fails when there is none: before the first noxshowUnlock, and when the
// surface was lost; and for another format than kPicture24Bits or a pitch other than width * 3.
ZEBX_API int noxshowGetPicture(NoxshowStream stream, const tag_PICTUREDESC* picture);

// Draws a registered picture into a window, scaled to it; a dark area where none is registered. Bit
// 2 of `flags` marks the window as the active one; other bits mean nothing. Fails for a number that
// is not among those above, and for a window that is gone or has no area.
ZEBX_API int noxshowBitmap(HWND window, DWORD picture_number, DWORD flags);
// Registers a picture under its number, replacing what was there. The pixels are copied: the bitmap
// stays the caller's and may be selected into a context. Fails for another number, a stale
// bitmap, and one of more than 16384 pixels a side; null takes no picture back.
ZEBX_API int noxshowSetBitmap(HBITMAP bitmap, DWORD picture_number);
}
