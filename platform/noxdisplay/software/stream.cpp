#include "platform/noxdisplay/software/stream.h"

#include <algorithm>
#include <utility>

namespace zebx::noxdisplay {

namespace {

constexpr LONG kMaxSide = 16384;
constexpr std::size_t kTripleBytes = 3;

bool IsSide(LONG pixels) {
  return pixels > 0 && pixels <= kMaxSide;
}

}  // namespace

// Keeps the picture that is the stream's when it begins, for as long as it exists.
class Stream::Reading {
 public:
  // With the lock held.
  explicit Reading(Stream& stream) : m_stream(stream), m_surface(stream.m_shown) {
    if (m_surface != nullptr) ++m_surface->m_readers;
  }
  ~Reading() {
    const std::lock_guard lock(m_stream.m_mutex);
    if (m_surface != nullptr) --m_surface->m_readers;
    if (m_presenter != nullptr) m_stream.m_presenter = std::move(m_presenter);
  }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  const Surface* Picture() const { return m_surface; }
  std::unique_ptr<Presenter> m_presenter;  // given back

 private:
  Stream& m_stream;
  Surface* m_surface;
};

bool Stream::IsGoodSize(CSize size) {
  return IsSide(size.cx) && IsSide(size.cy);
}

Stream::Stream(CSize size, const tag_DISPLAYINFO* info) : m_size(size) {
  m_info.m_flags = kShowSmooth;
  if (info != nullptr) m_info = *info;
  // Whoever gets a stream is to be able to lock it.
  FreeSurface();
}

void Stream::Lose() {
  const std::lock_guard lock(m_mutex);
  m_is_lost = true;
  m_shown = nullptr;
}

bool Stream::IsLost() {
  const std::lock_guard lock(m_mutex);
  return m_is_lost || m_is_closed;
}

bool Stream::Restore() {
  const std::lock_guard lock(m_mutex);
  if (m_is_closed) return false;
  m_is_lost = false;
  return true;
}

bool Stream::Lock(tag_SURFACELOCK* lock) {
  const std::lock_guard guard(m_mutex);
  if (lock == nullptr || m_locked != nullptr || m_is_lost || m_is_closed) return false;
  m_locked = FreeSurface();
  *lock = {};
  lock->m_pixels = reinterpret_cast<BYTE*>(m_locked->m_pixels.data());
  lock->m_pitch = static_cast<std::size_t>(m_size.cx) * sizeof(os::Color);
  return true;
}

bool Stream::Unlock() {
  const std::lock_guard lock(m_mutex);
  Surface* const written = std::exchange(m_locked, nullptr);
  if (written == nullptr) return false;
  if (!m_is_lost && !m_is_closed) m_shown = written;
  return true;
}

bool Stream::Show(HWND window, const tag_DISPLAYINFO* info, const PictureSet& registered) {
  tag_DISPLAYINFO shown;
  std::unique_lock lock(m_mutex);
  if (m_is_lost || m_is_closed) return false;
  if (info != nullptr) m_info = *info;
  shown = m_info;
  Reading reading(*this);
  reading.m_presenter = std::move(m_presenter);
  lock.unlock();

  if (reading.m_presenter == nullptr) reading.m_presenter = std::make_unique<Presenter>();
  const auto present = [&](const os::WindowPicture& picture) {
    const Canvas canvas(picture);
    const Surface* const surface = reading.Picture();
    const os::PixelSource source = surface != nullptr ? SourceOf(*surface) : os::PixelSource();
    reading.m_presenter->Present(canvas, surface != nullptr ? &source : nullptr, m_size, shown,
                                 registered);
  };
  return os::WithWindowPicture(window, std::ref(present)) != 0;
}

bool Stream::CopyPicture(const tag_PICTUREDESC& picture) {
  const auto width = static_cast<LONG>(picture.m_width);
  const auto height = static_cast<LONG>(picture.m_height);
  if (picture.m_format != kPicture24Bits || picture.m_pixels == nullptr || !IsSide(width) ||
      !IsSide(height)) {
    return false;
  }
  os::PixelLayout layout;
  layout.m_width = width;
  layout.m_height = height;
  layout.m_bit_count = 8 * kTripleBytes;
  layout.m_pitch_bytes = kTripleBytes * static_cast<std::size_t>(width);
  layout.m_top_down = picture.m_pitch > 0;
  if (layout.m_pitch_bytes != static_cast<std::size_t>(std::abs(LONGLONG{picture.m_pitch}))) {
    return false;
  }
  std::unique_lock lock(m_mutex);
  if (m_shown == nullptr || m_is_closed) return false;
  const Reading reading(*this);
  lock.unlock();
  os::StretchPixels(SourceOf(*reading.Picture()), {0, 0, m_size.cx, m_size.cy},
                    {layout, {picture.m_pixels, layout.TotalBytes()}, {}}, {0, 0, width, height},
                    os::StretchMode::kHalftone);
  return true;
}

bool Stream::Close() {
  const std::lock_guard lock(m_mutex);
  m_shown = nullptr;
  return !std::exchange(m_is_closed, true);
}

bool Stream::IsDone() {
  const std::lock_guard lock(m_mutex);
  return m_is_closed && m_locked == nullptr;
}

os::PixelSource Stream::SourceOf(const Surface& surface) const {
  return {os::PixelLayout::OfWords(m_size),
          {reinterpret_cast<const BYTE*>(surface.m_pixels.data()),
           surface.m_pixels.size() * sizeof(os::Color)},
          {}};
}

Stream::Surface* Stream::FreeSurface() {
  const auto found = std::ranges::find_if(m_surfaces, [this](const auto& surface) {
    return surface.get() != m_shown && surface->m_readers == 0;
  });
  if (found != m_surfaces.end()) return found->get();
  auto surface = std::make_unique<Surface>();
  surface->m_pixels.resize(static_cast<std::size_t>(m_size.cx) *
                           static_cast<std::size_t>(m_size.cy));
  return m_surfaces.emplace_back(std::move(surface)).get();
}

}  // namespace zebx::noxdisplay
