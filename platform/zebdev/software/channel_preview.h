// The live picture of a channel in its window.
#pragma once

#include <functional>

#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/streams.h"
#include "platform/zebdev/software/channel_state.h"
#include "platform/zebdev/software/picture_pixels.h"

namespace zebx::zebdev {

// Used by one thread at a time, in which it calls the display.
class ChannelPreview {
 public:
  ChannelPreview() = default;
  ~ChannelPreview() { DropStream(); }
  ChannelPreview(const ChannelPreview&) = delete;
  ChannelPreview& operator=(const ChannelPreview&) = delete;

  // Makes the stream ready and puts the picture into it: at its full size for show type 0, a half
  // of it for 1 and a quarter for 2. The stream; null when the window is gone or the display
  // refuses.
  NoxshowStream Draw(HWND window, DWORD show_type, const noxcodec::Picture& picture);
  // Presents what was drawn.
  void Present(const tag_DISPLAYINFO& record);
  // Draws and presents the same once more, where something was presented in this window before.
  void Again(HWND window, const noxcodec::Picture& picture);

 private:
  bool FitStream(const NoxshowSize& size);
  bool WritePicture(const noxcodec::Picture& picture);
  void DropStream();

  HWND m_window = nullptr;
  NoxshowStream m_stream = nullptr;
  NoxshowSize m_size = {};
  PicturePixels m_pixels;
  bool m_has_presented = false;
  tag_DISPLAYINFO m_record = {};
};

}  // namespace zebx::zebdev
