// The pictures of a recording, one for every frame.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/noxcodec/noxcodec.h"

class CZebFrameData;

namespace zebtool {

class PictureDecoder {
 public:
  enum class Result { kDecoded, kNoSignal, kDamaged };

  // Makes pictures of this size, whatever the coded size is.
  PictureDecoder(int width, int height);
  ~PictureDecoder();
  PictureDecoder(const PictureDecoder&) = delete;
  PictureDecoder& operator=(const PictureDecoder&) = delete;

  // Decodes the next frame. Without a decoded picture the one before stays. Throws JobError when
  // the codec has no decoder for the frame's encoder type.
  Result Decode(const CZebFrameData& frame);

  // The last good picture, planes of 4:2:0 back to back; black before the first. Valid until the
  // next Decode.
  std::span<const BYTE> Picture() const { return m_picture; }
  // The same as 32-bit BGRX rows, 4 * width bytes each, the top one first; empty before the first.
  std::vector<BYTE> BgrxPicture() const;

 private:
  void ChooseDecoder(BYTE encoder_type);

  int m_width;
  int m_height;
  std::vector<BYTE> m_picture;
  NxcHandle m_decoder = nullptr;
  std::optional<BYTE> m_encoder_type;  // that m_decoder was made for
};

}  // namespace zebtool
