#include "platform/noxcodec/software/video_decoder.h"

#include <utility>

#include "platform/noxcodec/software/deblocking.h"
#include "platform/noxcodec/software/reconstruction.h"

namespace zebx::noxcodec {

bool VideoDecoder::Decode(std::span<const BYTE> packet, FrameKind announced) {
  const auto header = OpenPacket(packet);
  if (!header || header->kind != announced) return false;
  const bool same_size =
      m_has_picture && header->width == m_last.width && header->height == m_last.height;
  const bool predicted = header->kind == FrameKind::kPredicted;
  if (predicted && (!same_size || header->reference != m_last.checksum)) return false;

  if (m_spare.Width() != MacroblocksOf(header->width) * kMacroblockSize ||
      m_spare.Height() != MacroblocksOf(header->height) * kMacroblockSize) {
    m_spare = MakeCodedPicture(header->width, header->height);
  }
  SyntaxModel model = predicted ? m_model : SyntaxModel();
  if (!DecodeMacroblocks(*header, packet.subspan(kPacketHeaderBytes), model)) return false;
  m_spare.ExtendBorder();
  std::swap(m_picture, m_spare);
  m_model = model;
  m_last = *header;
  m_has_picture = true;
  return true;
}

bool VideoDecoder::DecodeMacroblocks(const PacketHeader& header, std::span<const BYTE> coded,
                                     SyntaxModel& model) {
  const int columns = MacroblocksOf(header.width);
  const int rows = MacroblocksOf(header.height);
  MacroblockMap map(columns, rows);
  RangeDecoder decoder(coded);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      Macroblock macroblock;
      CodeMacroblock(decoder, model, header.kind,
                     {map.At(column - 1, row), map.At(column, row - 1)},
                     PredictMotion(map, column, row), macroblock);
      if (decoder.Overrun() || !IsAllowedMotion(macroblock.motion, column, row, columns, rows)) {
        return false;
      }
      ReconstructMacroblock(macroblock, header.quantiser, column, row, m_picture, m_spare);
      map.At(column, row) = static_cast<const MacroblockInfo&>(macroblock);
    }
  }
  DeblockCodedBlocks(map, header.quantiser, m_spare);
  return true;
}

PictureView VideoDecoder::LastPicture() const {
  return m_picture.View().Cropped(m_last.width, m_last.height);
}

}  // namespace zebx::noxcodec
