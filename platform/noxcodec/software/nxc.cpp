// The functions of noxcodec.h over the software codec. Leaving out this file alone leaves room for
// another codec library; the encoders stay.
#include "platform/noxcodec/noxcodec.h"

#include <cstdlib>
#include <exception>
#include <memory>
#include <new>

#include "platform/noxcodec/software/deblocking.h"
#include "platform/noxcodec/software/picture_output.h"
#include "platform/noxcodec/software/picture_scaler.h"
#include "platform/noxcodec/software/speech_decoder.h"
#include "platform/noxcodec/software/video_decoder.h"

// What a handle stands for.
struct NxcDecoder {
  virtual ~NxcDecoder() = default;
};

namespace {

using namespace zebx::noxcodec;

constexpr int kGood = 0;
constexpr int kFailed = 1;
constexpr DWORD kMaxOutputSize = 4096;

struct VideoHandle : NxcDecoder {
  VideoHandle(DWORD width, DWORD height)
      : output(static_cast<int>(width), static_cast<int>(height)) {}

  VideoDecoder decoder;
  PictureScaler scaler;
  Picture output;    // of the size that the decoder was created for
  Picture filtered;  // the last coded picture, when post-processing is asked for
};

struct AudioHandle : NxcDecoder {};

// The last picture, filtered as asked, in the output size.
PictureView RenderOutput(VideoHandle& handle, DWORD post_processing) {
  PictureView picture = handle.decoder.LastPicture();
  const bool horizontal = (post_processing & kNxcPostDeblockHorizontal) != 0;
  const bool vertical = (post_processing & kNxcPostDeblockVertical) != 0;
  if (horizontal || vertical) {
    handle.filtered = handle.decoder.LastCodedPicture();
    DeblockForDisplay(handle.decoder.LastQuantiser(), horizontal, vertical, handle.filtered);
    picture = handle.filtered.View().Cropped(picture.Width(), picture.Height());
  }
  if (picture.Width() == handle.output.Width() && picture.Height() == handle.output.Height()) {
    return picture;
  }
  handle.scaler.Scale(picture, handle.output);
  return handle.output.View();
}

bool IsUsablePitch(DWORD format, int pitch, int width) {
  if (format == kNxcFormatI420) return pitch >= width;
  return format == kNxcFormatBgrx && std::abs(std::int64_t{pitch}) >= kBgrxPixelBytes * width;
}

// Exceptions end here: the callers know results only.
template <class Operation>
int Guarded(Operation operation) {
  try {
    return operation();
  } catch (const std::exception&) {
    return kFailed;
  }
}

}  // namespace

int nxcCreateVideoDecoder(NxcHandle* decoder, DWORD, DWORD width, DWORD height, DWORD) {
  if (decoder == nullptr || width == 0 || height == 0 || width > kMaxOutputSize ||
      height > kMaxOutputSize) {
    return kFailed;
  }
  return Guarded([&] {
    *decoder = std::make_unique<VideoHandle>(width, height).release();
    return kGood;
  });
}

int nxcDecodeVideo(NxcHandle decoder, WORD frame_type, const BYTE* data, DWORD length) {
  auto* const video = dynamic_cast<VideoHandle*>(decoder);
  if (video == nullptr || data == nullptr) return kFailed;
  const FrameKind announced = frame_type == 0 ? FrameKind::kIntra : FrameKind::kPredicted;
  return Guarded([&] {
    return video->decoder.Decode({data, length}, announced) ? kGood : kFailed;
  });
}

int nxcGetVideo(NxcHandle decoder, BYTE* destination, DWORD format, int pitch,
                DWORD post_processing) {
  auto* const video = dynamic_cast<VideoHandle*>(decoder);
  if (video == nullptr || destination == nullptr || !video->decoder.HasPicture() ||
      !IsUsablePitch(format, pitch, video->output.Width())) {
    return kFailed;
  }
  return Guarded([&] {
    const PictureView picture = RenderOutput(*video, post_processing);
    if (format == kNxcFormatI420) {
      WriteI420(picture, destination, pitch);
    } else {
      const std::ptrdiff_t last_row = std::abs(std::ptrdiff_t{pitch}) * (picture.Height() - 1);
      WriteBgrx(picture, pitch < 0 ? destination + last_row : destination, pitch);
    }
    return kGood;
  });
}

int nxcCreateAudioDecoder(NxcHandle* decoder, BYTE) {
  if (decoder == nullptr) return kFailed;
  return Guarded([&] {
    *decoder = std::make_unique<AudioHandle>().release();
    return kGood;
  });
}

int nxcDecodeAudio(NxcHandle decoder, const BYTE* data, DWORD length, std::int16_t* pcm,
                   DWORD* samples) {
  if (dynamic_cast<AudioHandle*>(decoder) == nullptr || samples == nullptr) return kFailed;
  const auto count = SpeechSampleCount(length);
  if (!count) return kFailed;
  if (pcm != nullptr && (data == nullptr || !DecodeSpeech({data, length}, {pcm, *count}))) {
    return kFailed;
  }
  *samples = static_cast<DWORD>(*count);
  return kGood;
}

int nxcDestroyHandle(NxcHandle handle) {
  delete handle;
  return kGood;
}
