#include "capture/picture_formats.h"

using namespace zebx;

namespace {

struct PictureSize {
  DWORD m_width;
  DWORD m_height;
};

struct PictureFormat {
  PictureSize m_show;
  PictureSize m_encode;
  PictureSize m_capture;
};

// The encode width of 720 against a capture width of 704, and the encode size of size 3, are the
// hardware's own.
constexpr PictureFormat kFormats[2][kFrameSizesOfStandard] = {
    {
        {{160, 120}, {160, 112}, {160, 112}},
        {{240, 176}, {240, 176}, {240, 176}},
        {{320, 240}, {320, 240}, {320, 240}},
        {{640, 480}, {640, 240}, {640, 240}},
        {{160, 128}, {160, 128}, {320, 240}},
        {{320, 240}, {320, 240}, {320, 240}},
        {{320, 240}, {160, 128}, {320, 240}},
        {{640, 480}, {320, 240}, {320, 240}},
        {{704, 480}, {720, 240}, {704, 240}},
    },
    {
        {{176, 144}, {176, 144}, {176, 144}},
        {{256, 192}, {256, 192}, {256, 192}},
        {{352, 288}, {352, 288}, {352, 288}},
        {{704, 576}, {704, 288}, {704, 288}},
        {{176, 144}, {176, 144}, {352, 288}},
        {{352, 288}, {352, 288}, {352, 288}},
        {{352, 288}, {176, 144}, {352, 288}},
        {{704, 576}, {352, 288}, {352, 288}},
        {{704, 576}, {720, 288}, {704, 288}},
    },
};

const PictureFormat* FindFormat(DWORD frame_size) {
  const DWORD standard = zebxGetVideoStd(frame_size);
  if (standard == kNoVideoStandard) return nullptr;
  return &kFormats[standard][frame_size % kFirstPalFrameSize];
}

int Answer(DWORD frame_size, PictureSize PictureFormat::*which, DWORD* width, DWORD* height) {
  const PictureFormat* format = FindFormat(frame_size);
  if (format == nullptr || width == nullptr || height == nullptr) return 0;
  *width = (format->*which).m_width;
  *height = (format->*which).m_height;
  return 1;
}

}  // namespace

DWORD zebxGetVideoStd(DWORD frame_size) {
  if (frame_size < kFrameSizesOfStandard) return kVideoStandardNtsc;
  if (frame_size >= kFirstPalFrameSize && frame_size < kFirstPalFrameSize + kFrameSizesOfStandard) {
    return kVideoStandardPal;
  }
  return kNoVideoStandard;
}

int zebxGetShowSize(DWORD frame_size, DWORD* width, DWORD* height) {
  return Answer(frame_size, &PictureFormat::m_show, width, height);
}

int zebxGetEncodeSize(DWORD frame_size, DWORD* width, DWORD* height) {
  return Answer(frame_size, &PictureFormat::m_encode, width, height);
}

int zebxGetCaptureSize(DWORD frame_size, DWORD* width, DWORD* height) {
  return Answer(frame_size, &PictureFormat::m_capture, width, height);
}
