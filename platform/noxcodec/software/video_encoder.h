// The software video encoder: pictures in, the packets that nxcDecodeVideo takes out.
#pragma once

#include <memory>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"

namespace zebx::noxcodec {

// Sizes of coded pictures, in both directions.
inline constexpr int kMinCodedSize = 16;
inline constexpr int kMaxCodedSize = 4096;

// The quantiser sets the coarseness: coefficients are coded in steps of about twice its value.
inline constexpr int kMinQuantiser = 1;
inline constexpr int kMaxQuantiser = 31;
inline constexpr int kDefaultQuantiserI = 6;
inline constexpr int kDefaultQuantiserP = 8;

struct VideoEncoderSettings {
  int width = 0;
  int height = 0;
  int gop_length = 25;  // pictures from one I-frame to the next
  int quantiser_i = kDefaultQuantiserI;
  int quantiser_p = kDefaultQuantiserP;
};

// Encodes the pictures of one stream, in order. One thread at a time; deterministic: the same
// pictures and settings give the same bytes.
class ZEBX_API VideoEncoder {
 public:
  struct Packet {
    WORD frame_type;             // 0 = I-frame, 1 = a frame that depends on the one before it
    std::span<const BYTE> data;  // borrowed; valid until the next Encode
  };

  // Throws std::invalid_argument for a size outside kMinCodedSize..kMaxCodedSize, a quantiser
  // outside kMinQuantiser..kMaxQuantiser and a group length below 1.
  explicit VideoEncoder(const VideoEncoderSettings& settings);
  ~VideoEncoder();
  VideoEncoder(const VideoEncoder&) = delete;
  VideoEncoder& operator=(const VideoEncoder&) = delete;

  // Encodes the next picture, which has the size of the settings. `force_key` makes it an I-frame,
  // from which the group length counts anew.
  Packet Encode(const PictureView& picture, bool force_key = false);

 private:
  class Implementation;
  std::unique_ptr<Implementation> m_implementation;
};

}  // namespace zebx::noxcodec
