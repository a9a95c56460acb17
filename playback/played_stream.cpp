#include "playback/played_stream.h"

#include <memory>

#include "image/image.h"
#include "platform/noxdisplay/display_record.h"
#include "record/zeb_frame_data.h"

namespace zebx {

namespace {

constexpr DWORD kPictureBytesPerPixel = 3;

// What RT8Port boards encode where other boards encode something else.
constexpr tag_FRAMESIZE kRT8PortNtsc{7};
constexpr CSize kRT8PortNtscSize = {352, 240};
constexpr tag_FRAMESIZE kRT8PortPal{0x87};
constexpr CSize kRT8PortPalSize = {352, 288};

// Empty for an unknown frame size.
CSize LookUp(int (*table)(DWORD frame_size, DWORD* width, DWORD* height),
             tag_FRAMESIZE frame_size) {
  DWORD width = 0;
  DWORD height = 0;
  table(frame_size, &width, &height);
  return {static_cast<LONG>(width), static_cast<LONG>(height)};
}

}  // namespace

CSize PlayedSize(tag_FRAMESIZE frame_size, bool is_rt8port) {
  if (is_rt8port && frame_size == kRT8PortNtsc) return kRT8PortNtscSize;
  if (is_rt8port && frame_size == kRT8PortPal) return kRT8PortPalSize;
  return LookUp(zebxGetEncodeSize, frame_size);
}

CSize DecodedSize(tag_FRAMESIZE frame_size, bool is_rt8port) {
  if (is_rt8port && frame_size == kRT8PortNtsc) return kRT8PortNtscSize;
  return LookUp(zebxGetCaptureSize, frame_size);
}

NoxshowStream CreatePlayedStream(CSize size, const tag_DISPLAYINFO* info) {
  const NoxshowSize pixels = {static_cast<DWORD>(size.cx), static_cast<DWORD>(size.cy)};
  NoxshowStream stream = nullptr;
  for (const DWORD mode : {kNoxshowOverlaySurface, kNoxshowPlainSurface}) {
    if (noxshowCreateStream(&stream, &pixels, mode, info) == 0) return stream;
  }
  return nullptr;
}

NxcHandle CreatePlayedDecoder(CSize stream_size, BYTE encoder_type, DWORD post_processing) {
  NxcHandle decoder = nullptr;
  const int result =
      nxcCreateVideoDecoder(&decoder, encoder_type, static_cast<DWORD>(stream_size.cx),
                            static_cast<DWORD>(stream_size.cy), post_processing);
  return result == 0 ? decoder : nullptr;
}

void DecodeFrame(NxcHandle decoder, const CZebFrameData& frame) {
  // A host's own frame may announce more bytes than it has.
  if (frame.IsVideoLost() != 0 || !frame.HasRoomFor(frame.GetVideoLength(), 0)) return;
  nxcDecodeVideo(decoder, frame.GetFrameType(), frame.GetVideoBuf(), frame.GetVideoLength());
}

void PutPicture(NxcHandle decoder, NoxshowStream stream, RowOrder rows, DWORD post_processing) {
  tag_SURFACELOCK lock = {};
  if (noxshowLock(stream, &lock) != 0) return;
  const auto pitch = static_cast<int>(lock.m_pitch);
  nxcGetVideo(decoder, lock.m_pixels, kNxcFormatBgrx, rows == RowOrder::kTopDown ? pitch : -pitch,
              post_processing);
  noxshowUnlock(stream);
}

void RestoreLostSurface(NoxshowStream stream) {
  if (noxshowIsSurfaceLost(stream) != 0) noxshowRestoreSurface(stream);
}

int CapturePicture(NoxshowStream stream, tag_FRAMESIZE frame_size, CImage* image) {
  if (image == nullptr || stream == nullptr) return 0;
  const CSize size = LookUp(zebxGetShowSize, frame_size);
  if (size == CSize()) return 0;
  const auto width = static_cast<DWORD>(size.cx);
  const auto height = static_cast<DWORD>(size.cy);
  auto pixels = std::make_unique<BYTE[]>(std::size_t{width} * height * kPictureBytesPerPixel);
  tag_PICTUREDESC picture = {};
  picture.m_format = noxdisplay::kPicture24Bits;
  picture.m_pixels = pixels.get();
  picture.m_width = width;
  picture.m_height = height;
  picture.m_pitch = -static_cast<LONG>(width * kPictureBytesPerPixel);
  if (noxshowGetPicture(stream, &picture) != 0) return 0;
  return image->CreateImage(pixels.release(), width, height);
}

}  // namespace zebx
