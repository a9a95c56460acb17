#include "platform/noxdisplay/software/display_library.h"

#include <utility>

namespace zebx::noxdisplay {

namespace {

constexpr const char* kFunctionNames[kFunctions] = {
    "noxshowSetWatermark", "noxshowIsLost",        "noxshowRestore",       "noxshowDrawDib",
    "noxshowCreateStream", "noxshowDestroyStream", "noxshowIsSurfaceLost", "noxshowRestoreSurface",
    "noxshowLock",         "noxshowUnlock",        "noxshowDisplay",       "noxshowGetPicture",
    "noxshowBitmap",       "noxshowSetBitmap",
};

}  // namespace

DisplayLibrary::DisplayLibrary() : m_script(kFunctionNames) {}

DisplayLibrary& DisplayLibrary::Get() {
  // Never destroyed: a host's threads may end after main has. It takes no memory, so that its first
  // call does not fail in another way than the later ones.
  alignas(DisplayLibrary) static std::byte place[sizeof(DisplayLibrary)];
  static DisplayLibrary& library = *new (place) DisplayLibrary;
  return library;
}

NoxshowStream DisplayLibrary::Add(std::shared_ptr<Stream> stream) {
  const std::lock_guard lock(m_mutex);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): a number in the place of an address
  auto* const handle = reinterpret_cast<NoxshowStream>(++m_last_handle);
  m_streams.emplace(handle, std::move(stream));
  return handle;
}

std::shared_ptr<Stream> DisplayLibrary::Find(NoxshowStream handle) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_streams.find(handle);
  return found != m_streams.end() ? found->second : nullptr;
}

void DisplayLibrary::ForgetDone(NoxshowStream handle, Stream& stream) {
  if (!stream.IsDone()) return;
  std::shared_ptr<Stream> ended;  // outside the lock
  const std::lock_guard lock(m_mutex);
  const auto found = m_streams.find(handle);
  if (found == m_streams.end()) return;
  ended = std::move(found->second);
  m_streams.erase(found);
}

std::size_t DisplayLibrary::Streams() {
  const std::lock_guard lock(m_mutex);
  return m_streams.size();
}

void DisplayLibrary::Lose() {
  m_is_lost = true;
  std::vector<std::shared_ptr<Stream>> streams;
  {
    const std::lock_guard lock(m_mutex);
    for (const auto& [handle, stream] : m_streams) streams.push_back(stream);
  }
  for (const auto& stream : streams) stream->Lose();
}

void DisplayLibrary::RefuseMode(DWORD mode, bool is_refused) {
  if (mode == kNoxshowOverlaySurface) m_refuses_overlay = is_refused;
  if (mode == kNoxshowPlainSurface) m_refuses_plain = is_refused;
}

bool DisplayLibrary::IsGoodMode(DWORD mode) const {
  return (mode == kNoxshowOverlaySurface && !m_refuses_overlay) ||
         (mode == kNoxshowPlainSurface && !m_refuses_plain);
}

}  // namespace zebx::noxdisplay
