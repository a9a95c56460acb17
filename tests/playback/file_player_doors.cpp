// The codec of these tests, whose pictures are all alike, and a look at what is displayed.
#include <algorithm>
#include <cstring>

#include "tests/playback/file_player_fixture.h"

struct NxcDecoder {
  int m_width;
  int m_height;
};

int nxcCreateVideoDecoder(NxcHandle* decoder, DWORD, DWORD width, DWORD height, DWORD post) {
  EXPECT_EQ(post, 0x1DU);
  if (Doors::decoders_to_refuse > 0 && --Doors::decoders_to_refuse == 0) return 1;
  *decoder = new NxcDecoder{static_cast<int>(width), static_cast<int>(height)};
  ++Doors::decoders;
  return 0;
}
int nxcCreateAudioDecoder(NxcHandle* decoder, BYTE) {
  return nxcCreateVideoDecoder(decoder, 0, 1, 1, 0x1D);
}
int nxcDestroyHandle(NxcHandle handle) {
  if (handle != nullptr) --Doors::decoders;
  delete handle;
  return 0;
}
int nxcDecodeVideo(NxcHandle, WORD, const BYTE* data, DWORD length) {
  const std::string text(data, data + length);
  Doors::decoded = text.substr(std::min(text.size(), std::strlen("picture ")));
  return 0;
}
int nxcGetVideo(NxcHandle decoder, BYTE* destination, DWORD, int pitch, DWORD post_processing) {
  Doors::is_upside_down = pitch < 0;
  Doors::post_processing = post_processing;
  // The whole of what a picture may take.
  std::memset(destination, 0x55, static_cast<std::size_t>(std::abs(pitch) * decoder->m_height));
  EXPECT_GE(std::abs(pitch), decoder->m_width * 4);
  return 0;
}
// Fills three buffers, which is enough: nobody asks for another frame.
int nxcDecodeAudio(NxcHandle, const BYTE*, DWORD, std::int16_t*, DWORD* samples) {
  *samples = 3 * 1024;
  return 0;
}

extern "C" int __real_noxshowDisplay(NoxshowStream, HWND, const tag_DISPLAYINFO*);
extern "C" int __wrap_noxshowDisplay(NoxshowStream stream, HWND window,
                                     const tag_DISPLAYINFO* info) {
  if (info != nullptr) {
    Doors::shown = Doors::decoded;
    Doors::record = *info;
  }
  return __real_noxshowDisplay(stream, window, info);
}
