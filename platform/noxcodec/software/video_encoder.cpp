#include "platform/noxcodec/software/video_encoder.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/noxcodec/software/deblocking.h"
#include "platform/noxcodec/software/macroblock_encoder.h"
#include "platform/noxcodec/software/reconstruction.h"
#include "platform/noxcodec/software/video_format.h"

namespace zebx::noxcodec {
namespace {

bool Within(int value, int least, int most) {
  return value >= least && value <= most;
}

void Validate(const VideoEncoderSettings& settings) {
  if (!Within(settings.width, kMinCodedSize, kMaxCodedSize) ||
      !Within(settings.height, kMinCodedSize, kMaxCodedSize)) {
    throw std::invalid_argument("video encoder: picture size out of range");
  }
  if (!Within(settings.quantiser_i, kMinQuantiser, kMaxQuantiser) ||
      !Within(settings.quantiser_p, kMinQuantiser, kMaxQuantiser)) {
    throw std::invalid_argument("video encoder: quantiser out of range");
  }
  if (settings.gop_length < 1) {
    throw std::invalid_argument("video encoder: group length out of range");
  }
}

// Copies a picture into one of whole macroblocks, its last column and row repeated.
void CopyPadded(const PictureView& source, Picture& target) {
  for (int plane = 0; plane < kPlaneCount; ++plane) {
    const PlaneView from = source.planes[static_cast<std::size_t>(plane)];
    const MutablePlaneView to = target.Plane(plane);
    for (int y = 0; y < to.height; ++y) {
      const BYTE* const row = from.Row(std::min(y, from.height - 1));
      std::memcpy(to.Row(y), row, static_cast<std::size_t>(from.width));
      std::fill(to.Row(y) + from.width, to.Row(y) + to.width, row[from.width - 1]);
    }
  }
}

}  // namespace

class VideoEncoder::Implementation {
 public:
  explicit Implementation(const VideoEncoderSettings& settings)
      : m_settings(settings),
        m_source(MakeCodedPicture(settings.width, settings.height)),
        m_reference(m_source),
        m_target(m_source),
        m_map(MacroblocksOf(settings.width), MacroblocksOf(settings.height)),
        m_previous_map(m_map) {}

  Packet Encode(const PictureView& picture, bool force_key) {
    if (picture.Width() != m_settings.width || picture.Height() != m_settings.height) {
      throw std::invalid_argument("video encoder: picture of another size");
    }
    const bool key = force_key || m_until_key == 0;
    m_until_key = (key ? m_settings.gop_length : m_until_key) - 1;

    CopyPadded(picture, m_source);
    PacketHeader header;
    header.kind = key ? FrameKind::kIntra : FrameKind::kPredicted;
    header.quantiser = key ? m_settings.quantiser_i : m_settings.quantiser_p;
    header.width = m_settings.width;
    header.height = m_settings.height;
    header.reference = key ? 0 : m_last_checksum;
    EncodeMacroblocks(header);
    m_last_checksum = SealPacket(header, m_packet);
    return {static_cast<WORD>(header.kind), m_packet};
  }

 private:
  void EncodeMacroblocks(const PacketHeader& header) {
    if (header.kind == FrameKind::kIntra) m_model = SyntaxModel();
    m_packet.assign(kPacketHeaderBytes, 0);
    RangeEncoder coder(m_packet);
    MacroblockEncoder macroblocks(header.kind, header.quantiser, m_source, m_reference,
                                  m_previous_map, m_model, m_target, m_map);
    for (int row = 0; row < MacroblocksOf(header.height); ++row) {
      for (int column = 0; column < MacroblocksOf(header.width); ++column) {
        Macroblock& macroblock = macroblocks.Encode(column, row);
        CodeMacroblock(coder, m_model, header.kind,
                       {m_map.At(column - 1, row), m_map.At(column, row - 1)},
                       PredictMotion(m_map, column, row), macroblock);
      }
    }
    coder.Finish();
    DeblockCodedBlocks(m_map, header.quantiser, m_target);
    m_target.ExtendBorder();
    std::swap(m_reference, m_target);
    std::swap(m_previous_map, m_map);
  }

  const VideoEncoderSettings m_settings;
  int m_until_key = 0;
  DWORD m_last_checksum = 0;
  SyntaxModel m_model;
  Picture m_source;
  Picture m_reference;  // the last picture as the decoder has it
  Picture m_target;
  MacroblockMap m_map;
  MacroblockMap m_previous_map;
  std::vector<BYTE> m_packet;
};

VideoEncoder::VideoEncoder(const VideoEncoderSettings& settings) {
  Validate(settings);
  m_implementation = std::make_unique<Implementation>(settings);
}

VideoEncoder::~VideoEncoder() = default;

VideoEncoder::Packet VideoEncoder::Encode(const PictureView& picture, bool force_key) {
  return m_implementation->Encode(picture, force_key);
}

}  // namespace zebx::noxcodec
