#include "fuzz/light_pictures.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <numeric>
#include <set>
#include <span>

#include "platform/noxcodec/noxcodec.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/streams.h"

using namespace zebx;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*)

// The linker puts __wrap_NAME in the place of NAME, which is __real_NAME then.
extern "C" {
int __real_nxcDestroyHandle(NxcHandle handle);
}

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

struct Size {
  std::size_t m_width;
  std::size_t m_height;
};

// Decoders and streams that there are, by address.
template <typename Made, typename Handle>
class Table {
 public:
  Handle Add(std::unique_ptr<Made> made) {
    const std::lock_guard lock(m_mutex);
    Made* const added = made.release();
    m_made.insert(added);
    return reinterpret_cast<Handle>(added);
  }
  // Null for another handle.
  Made* Find(Handle handle) {
    const std::lock_guard lock(m_mutex);
    Made* const made = reinterpret_cast<Made*>(handle);
    return m_made.contains(made) ? made : nullptr;
  }
  bool Remove(Handle handle) {
    std::unique_ptr<Made> removed;
    const std::lock_guard lock(m_mutex);
    auto* const made = reinterpret_cast<Made*>(handle);
    if (m_made.erase(made) == 0) return false;
    removed.reset(made);
    return true;
  }

 private:
  std::mutex m_mutex;
  std::set<Made*> m_made;
};

struct Decoder {
  Size m_size;
  bool m_has_picture = false;
};

struct Stream {
  Size m_size;
  std::unique_ptr<BYTE[]> m_surface;
  std::atomic<bool> m_is_locked = false;
  std::atomic<bool> m_has_picture = false;
};

Table<Decoder, NxcHandle> g_decoders;
Table<Stream, NoxshowStream> g_streams;
std::atomic<bool> g_is_lost = false;

// A player uses a stream that it has destroyed for nothing but copying.
Stream& Find(NoxshowStream handle) {
  Stream* const stream = g_streams.Find(handle);
  Require(stream != nullptr);
  return *stream;
}

}  // namespace

void LoseLightSurfaces(bool is_lost) {
  g_is_lost = is_lost;
}

extern "C" {

int __wrap_nxcCreateVideoDecoder(NxcHandle* decoder, DWORD, DWORD width, DWORD height, DWORD) {
  *decoder = g_decoders.Add(std::make_unique<Decoder>(Decoder{{width, height}}));
  return 0;
}

// Takes every packet for a picture of which a byte says so.
int __wrap_nxcDecodeVideo(NxcHandle handle, WORD, const BYTE* data, DWORD length) {
  Decoder* const decoder = g_decoders.Find(handle);
  Require(decoder != nullptr);
  const std::span bytes(data, length);
  if (std::accumulate(bytes.begin(), bytes.end(), 0U) % 2 == 0) return 1;
  decoder->m_has_picture = true;
  return 0;
}

int __wrap_nxcGetVideo(NxcHandle handle, BYTE* destination, DWORD format, int pitch, DWORD) {
  const Decoder* const decoder = g_decoders.Find(handle);
  Require(decoder != nullptr && format == kNxcFormatBgrx);
  const auto row_bytes = static_cast<std::size_t>(std::abs(pitch));
  Require(row_bytes >= 4 * decoder->m_size.m_width);
  if (!decoder->m_has_picture) return 1;
  destination[0] = destination[row_bytes * decoder->m_size.m_height - 1] = 1;
  return 0;
}

int __wrap_nxcDestroyHandle(NxcHandle handle) {
  return g_decoders.Remove(handle) ? 0 : __real_nxcDestroyHandle(handle);
}

int __wrap_noxshowCreateStream(NoxshowStream* stream, const NoxshowSize* size, DWORD,
                               const tag_DISPLAYINFO*) {
  auto made = std::make_unique<Stream>();
  made->m_size = {size->m_width, size->m_height};
  // Not filled: pages that nobody touches take no time.
  made->m_surface =
      std::make_unique_for_overwrite<BYTE[]>(std::size_t{size->m_width} * size->m_height * 4);
  *stream = g_streams.Add(std::move(made));
  return 0;
}

int __wrap_noxshowDestroyStream(NoxshowStream stream) {
  Require(stream == nullptr || g_streams.Remove(stream));
  return 0;
}

int __wrap_noxshowIsSurfaceLost(NoxshowStream stream) {
  Find(stream);
  return g_is_lost ? 1 : 0;
}

int __wrap_noxshowRestoreSurface(NoxshowStream stream) {
  Find(stream).m_has_picture = false;
  return g_is_lost ? 1 : 0;
}

int __wrap_noxshowLock(NoxshowStream handle, tag_SURFACELOCK* lock) {
  Stream& stream = Find(handle);
  Require(!stream.m_is_locked);
  if (g_is_lost) return 1;
  stream.m_is_locked = true;
  lock->m_pixels = stream.m_surface.get();
  lock->m_pitch = 4 * stream.m_size.m_width;
  return 0;
}

int __wrap_noxshowUnlock(NoxshowStream handle) {
  Stream& stream = Find(handle);
  Require(stream.m_is_locked);
  stream.m_is_locked = false;
  stream.m_has_picture = true;
  return 0;
}

int __wrap_noxshowDisplay(NoxshowStream stream, HWND, const tag_DISPLAYINFO* info) {
  Find(stream);
  if (info == nullptr) return 0;
  Require(info->m_mask_count <= noxdisplay::kDisplayMasks);
  for (const char* text : {info->m_camera_name, info->m_board_name, info->m_clock,
                           info->m_begin_time, info->m_end_time}) {
    Require(std::memchr(text, 0, noxdisplay::kDisplayTextBytes) != nullptr);
  }
  return 0;
}

int __wrap_noxshowGetPicture(NoxshowStream stream, const tag_PICTUREDESC* picture) {
  const Stream* const found = g_streams.Find(stream);
  if (found == nullptr || !found->m_has_picture) return 1;
  Require(picture->m_pitch == -static_cast<LONG>(3 * picture->m_width));
  picture->m_pixels[0] = picture->m_pixels[3 * picture->m_width * picture->m_height - 1] = 1;
  return 0;
}
}

// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)
