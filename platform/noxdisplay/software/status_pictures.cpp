#include "platform/noxdisplay/software/status_pictures.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/noxdisplay/software/stream.h"
#include "platform/os/graphics/graphics.h"

namespace zebx::noxdisplay {

namespace {

std::optional<std::size_t> IndexOf(DWORD number) {
  const auto* const found = std::ranges::find(kPictureNumbers, number);
  if (found == kPictureNumbers.end()) return std::nullopt;
  return static_cast<std::size_t>(found - kPictureNumbers.begin());
}

}  // namespace

bool IsPictureNumber(DWORD number) {
  return IndexOf(number).has_value();
}

os::PixelSource StatusPicture::Source() const {
  return {os::PixelLayout::OfWords(m_size),
          {reinterpret_cast<const BYTE*>(m_pixels.data()), m_pixels.size() * sizeof(os::Color)},
          {}};
}

const StatusPicture* PictureSet::Find(DWORD number) const {
  const auto index = IndexOf(number);
  return index ? m_pictures[*index].get() : nullptr;
}

StatusPictures& StatusPictures::Get() {
  // Never destroyed: a host's threads may end after main has.
  static StatusPictures& pictures = *new StatusPictures;
  return pictures;
}

bool StatusPictures::Register(HBITMAP bitmap, DWORD number) {
  const auto index = IndexOf(number);
  const auto picture = std::make_shared<StatusPicture>();
  if (!index || os::GetBitmapSize(bitmap, &picture->m_size) == 0) return false;
  // A bitmap of 1 bit a pixel may be far larger than memory has room for at 32.
  if (!Stream::IsGoodSize(picture->m_size)) return false;
  picture->m_pixels.resize(static_cast<std::size_t>(picture->m_size.cx) *
                           static_cast<std::size_t>(picture->m_size.cy));
  if (os::GetBitmapPixels(bitmap, picture->m_pixels) == 0) return false;
  std::shared_ptr<const StatusPicture> registered = picture;
  const std::lock_guard lock(m_mutex);
  m_current.m_pictures[*index].swap(registered);
  return true;
}

PictureSet StatusPictures::Current() {
  const std::lock_guard lock(m_mutex);
  return m_current;
}

void StatusPictures::Clear() {
  PictureSet cleared;
  const std::lock_guard lock(m_mutex);
  std::swap(m_current, cleared);
}

}  // namespace zebx::noxdisplay
