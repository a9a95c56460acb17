// The software video decoder: packets of VideoEncoder in, pictures of the coded size out.
#pragma once

#include <span>

#include "platform/framework/types.h"
#include "platform/noxcodec/software/macroblock_syntax.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/noxcodec/software/video_format.h"

namespace zebx::noxcodec {

// Decodes the packets of one stream. A packet that fails changes nothing: the last good picture
// stays, and decoding goes on with the packet that follows it or with any I-frame. One thread at a
// time.
class VideoDecoder {
 public:
  // Decodes any bytes to a picture or fails: for a packet that is damaged or cut, whose kind is not
  // the announced one, that breaks the syntax or a limit, and for a predicted frame unless the
  // frame it follows was the last one decoded.
  bool Decode(std::span<const BYTE> packet, FrameKind announced);

  bool HasPicture() const { return m_has_picture; }
  // The last good picture, in its coded size. Borrowed; valid until the next Decode.
  PictureView LastPicture() const;
  // The same in whole macroblocks.
  const Picture& LastCodedPicture() const { return m_picture; }
  int LastQuantiser() const { return m_last.quantiser; }

 private:
  bool DecodeMacroblocks(const PacketHeader& header, std::span<const BYTE> coded,
                         SyntaxModel& model);

  bool m_has_picture = false;
  PacketHeader m_last;
  SyntaxModel m_model;
  Picture m_picture;  // of m_last
  Picture m_spare;    // what Decode works on until it succeeds
};

}  // namespace zebx::noxcodec
