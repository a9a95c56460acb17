#include "platform/zebdev/software/channel_preview.h"

#include "platform/os/windows/windows.h"

namespace zebx::zebdev {
namespace {

NoxshowSize ShownSize(const noxcodec::Picture& picture, DWORD show_type) {
  auto width = static_cast<DWORD>(picture.Width());
  auto height = static_cast<DWORD>(picture.Height());
  // Pictures of single fields have twice the columns of what they show: they lose these first.
  bool is_field = width > 2 * height;
  for (DWORD halvings = show_type; halvings > 0; --halvings) {
    width /= 2;
    if (!is_field) height /= 2;
    is_field = false;
  }
  return {width, height};
}

}  // namespace

NoxshowStream ChannelPreview::Draw(HWND window, DWORD show_type, const noxcodec::Picture& picture) {
  if (os::IsWindow(window) == 0 || !FitStream(ShownSize(picture, show_type))) return nullptr;
  m_window = window;
  return WritePicture(picture) ? m_stream : nullptr;
}

void ChannelPreview::Present(const tag_DISPLAYINFO& record) {
  m_record = record;
  m_has_presented = noxshowDisplay(m_stream, m_window, &m_record) == 0;
}

void ChannelPreview::Again(HWND window, const noxcodec::Picture& picture) {
  if (!m_has_presented || window != m_window || os::IsWindow(window) == 0) return;
  if (!WritePicture(picture)) return;
  noxshowDisplay(m_stream, m_window, &m_record);
}

bool ChannelPreview::FitStream(const NoxshowSize& size) {
  if (m_stream != nullptr && size.m_width == m_size.m_width && size.m_height == m_size.m_height) {
    return true;
  }
  DropStream();
  NoxshowStream stream = nullptr;
  if (noxshowCreateStream(&stream, &size, kNoxshowOverlaySurface, nullptr) != 0 &&
      noxshowCreateStream(&stream, &size, kNoxshowPlainSurface, nullptr) != 0) {
    return false;
  }
  m_stream = stream;
  m_size = size;
  return true;
}

bool ChannelPreview::WritePicture(const noxcodec::Picture& picture) {
  if (noxshowIsSurfaceLost(m_stream) != 0 && noxshowRestoreSurface(m_stream) != 0) return false;
  tag_SURFACELOCK lock = {};
  if (noxshowLock(m_stream, &lock) != 0) return false;
  m_pixels.WriteBgrx(picture.View(), static_cast<int>(m_size.m_width),
                     static_cast<int>(m_size.m_height), lock.m_pixels,
                     static_cast<std::ptrdiff_t>(lock.m_pitch));
  if (noxshowUnlock(m_stream) == 0) return true;
  // It takes no other picture while it is locked: the next one gets a new stream.
  NoxshowStream locked = m_stream;
  DropStream();
  noxshowUnlock(locked);
  return false;
}

void ChannelPreview::DropStream() {
  noxshowDestroyStream(m_stream);
  m_stream = nullptr;
  m_has_presented = false;
}

}  // namespace zebx::zebdev
