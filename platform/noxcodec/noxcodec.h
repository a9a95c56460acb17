// The codec library: video and audio decoders behind handles. The library links against these
// functions only; any codec that implements them can stand in for the software one.
//
// Every function answers 0 for success and another value for failure. A handle is used by one
// thread at a time; different handles are independent.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

// A video or audio decoder. Created and destroyed here, borrowed everywhere else.
using NxcHandle = struct NxcDecoder*;

// Output formats of nxcGetVideo.
enum : DWORD {
  // Planar 4:2:0: `height` luma rows of `pitch` bytes, then the Cb rows, then the Cr rows, both
  // (height + 1) / 2 rows of (pitch + 1) / 2 bytes. The pitch is positive.
  kNxcFormatI420 = 1,
  // 32-bit BGRX rows, 4 * width bytes each. A negative pitch writes the rows in reverse order
  // inside the same buffer of height * |pitch| bytes: the first picture row comes last.
  kNxcFormatBgrx = 2,
};

// Bits of the post-processing word.
enum : DWORD {
  kNxcPostDeblockHorizontal = 0x01,
  kNxcPostDeblockVertical = 0x04,
  // What players ask for; the bits beyond the two above are reserved for other codecs.
  kNxcPostPlayback = 0x1D,
};

extern "C" {

// Creates a video decoder whose pictures are width * height pixels whatever the coded size of the
// stream (a stream of another size is scaled). Fails for a size of 0 or above 4096 in either
// direction and for a null `decoder`. `*decoder` is set only on success. `post_processing`
// announces what nxcGetVideo will be asked for; the software codec needs no such notice, nor the
// encoder type.
ZEBX_API int nxcCreateVideoDecoder(NxcHandle* decoder, DWORD encoder_type, DWORD width,
                                   DWORD height, DWORD post_processing);

// Decodes one compressed frame of `length` bytes. `frame_type` 0 announces an I-frame. Fails, with
// the last good picture kept, for a packet that is damaged, cut or of the other kind, and for a
// frame that depends on an earlier one unless that was the last one decoded: after a lost frame
// nothing decodes until the next I-frame.
ZEBX_API int nxcDecodeVideo(NxcHandle decoder, WORD frame_type, const BYTE* data, DWORD length);

// Writes the last decoded picture to `destination` in one of the formats above; `pitch` is in
// bytes. `post_processing` are the bits above, 0 for none. Fails before the first decoded picture,
// for an unknown format and for a pitch smaller than a row; nothing is written then. The X byte is
// 255.
ZEBX_API int nxcGetVideo(NxcHandle decoder, BYTE* destination, DWORD format, int pitch,
                         DWORD post_processing);

// Creates a decoder for speech packets: 8 kHz, mono. `flag` is non-zero for the packets of boards
// of encoder type 2.
ZEBX_API int nxcCreateAudioDecoder(NxcHandle* decoder, BYTE flag);

// Decodes one speech packet of `length` bytes to 16-bit samples. With `pcm` null only `*samples` is
// set, from the packet's length alone; `data` may then be null too. `pcm` holds that many samples,
// an even number. Fails for a packet that is too short or malformed; nothing is written then.
ZEBX_API int nxcDecodeAudio(NxcHandle decoder, const BYTE* data, DWORD length, std::int16_t* pcm,
                            DWORD* samples);

// Destroys a video or audio decoder. Null is ignored.
ZEBX_API int nxcDestroyHandle(NxcHandle handle);
}
