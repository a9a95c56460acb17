// A decoder and a display stream that fit together: what every player makes, feeds and shows.
#pragma once

#include "platform/framework/geometry.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxdisplay/streams.h"
#include "record/zeb_file_info.h"

class CImage;
class CZebFrameData;

namespace zebx {

// Ends what a player owns of the two libraries.
struct DestroyHandle {
  void operator()(NxcHandle decoder) const { nxcDestroyHandle(decoder); }
  void operator()(NoxshowStream stream) const { noxshowDestroyStream(stream); }
};

// The size in which a recording is played: its encode size, where recordings of RT8Port boards have
// sizes of their own for the frame sizes 7 and 0x87. Empty for an unknown frame size.
CSize PlayedSize(tag_FRAMESIZE frame_size, bool is_rt8port);
// The size in which frames that a host hands over are decoded: the capture size, where RT8Port
// boards have a size of their own for frame size 7. Empty for an unknown frame size.
CSize DecodedSize(tag_FRAMESIZE frame_size, bool is_rt8port);

// Creates a stream: of the overlay's mode, then of the plain one. Null when both are refused.
NoxshowStream CreatePlayedStream(CSize size, const tag_DISPLAYINFO* info);

// Creates the decoder whose pictures fill a stream of that size; null when it is refused. Give it
// the size that the stream was made with, also when header or frames have come to mean another one
// since: the decoder scales, and PutPicture never leads beyond the surface.
NxcHandle CreatePlayedDecoder(CSize stream_size, BYTE encoder_type, DWORD post_processing);

// Gives the frame to the decoder, unless its video is lost. What the decoder answers is not looked
// at: the picture before stays.
void DecodeFrame(NxcHandle decoder, const CZebFrameData& frame);

// Rows of a picture in the surface: as they come, or the last first.
enum class RowOrder { kTopDown, kBottomUp };

// Puts the decoder's picture into the stream's surface. Both must have been made for the same size
// (CreatePlayedDecoder). Nothing is fetched when the surface cannot be locked.
void PutPicture(NxcHandle decoder, NoxshowStream stream, RowOrder rows, DWORD post_processing);

void RestoreLostSurface(NoxshowStream stream);

// Copies the picture on the screen, in the show size of the frame size, into the image, which then
// owns it. 1, or 0 for null, for an unknown frame size, and when the display has no picture.
int CapturePicture(NoxshowStream stream, tag_FRAMESIZE frame_size, CImage* image);

}  // namespace zebx
