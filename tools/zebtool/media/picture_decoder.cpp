#include "tools/zebtool/media/picture_decoder.h"

#include <algorithm>

#include "record/zeb_frame_data.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/media/y4m.h"

namespace zebtool {
namespace {

constexpr BYTE kBlackLuma = 16;
constexpr BYTE kNoChroma = 128;
constexpr int kBgrxPixelBytes = 4;

}  // namespace

PictureDecoder::PictureDecoder(int width, int height)
    : m_width(width),
      m_height(height),
      m_picture(static_cast<std::size_t>(RawPictureBytes(width, height)), kNoChroma) {
  std::fill_n(m_picture.begin(), width * height, kBlackLuma);
}

PictureDecoder::~PictureDecoder() {
  nxcDestroyHandle(m_decoder);
}

void PictureDecoder::ChooseDecoder(BYTE encoder_type) {
  if (m_encoder_type == encoder_type) return;
  nxcDestroyHandle(m_decoder);
  m_decoder = nullptr;
  if (nxcCreateVideoDecoder(&m_decoder, encoder_type, static_cast<DWORD>(m_width),
                            static_cast<DWORD>(m_height), 0) != 0) {
    throw JobError("the codec has no decoder for encoder type " + std::to_string(encoder_type));
  }
  m_encoder_type = encoder_type;
}

PictureDecoder::Result PictureDecoder::Decode(const CZebFrameData& frame) {
  if (frame.IsVideoLost() != 0) return Result::kNoSignal;
  ChooseDecoder(frame.GetEncoderType());
  const bool decoded = nxcDecodeVideo(m_decoder, frame.GetFrameType(), frame.GetVideoBuf(),
                                      frame.GetVideoLength()) == 0 &&
                       nxcGetVideo(m_decoder, m_picture.data(), kNxcFormatI420, m_width, 0) == 0;
  return decoded ? Result::kDecoded : Result::kDamaged;
}

std::vector<BYTE> PictureDecoder::BgrxPicture() const {
  const int pitch = m_width * kBgrxPixelBytes;
  std::vector<BYTE> rows(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(m_height));
  if (m_decoder == nullptr || nxcGetVideo(m_decoder, rows.data(), kNxcFormatBgrx, pitch, 0) != 0) {
    rows.clear();
  }
  return rows;
}

}  // namespace zebtool
