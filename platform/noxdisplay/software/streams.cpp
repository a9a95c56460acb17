// The door's functions of streams and of registered pictures.
#include "platform/noxdisplay/streams.h"

#include <limits>

#include "platform/noxdisplay/software/display_library.h"
#include "platform/noxdisplay/software/status_pictures.h"

using namespace zebx;
using namespace zebx::noxdisplay;

namespace {

// A handle as the journal shows it.
template <typename Handle>
ULONGLONG Number(Handle handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

// A call on a stream, which fails for a handle that is none.
template <typename Action, typename... Words>
int CallOn(NoxshowStream handle, Function function, Action action, Words... words) {
  DisplayLibrary& library = DisplayLibrary::Get();
  const auto on_stream = [&] {
    const auto stream = library.Find(handle);
    return stream != nullptr && action(*stream);
  };
  return library.Call(function, on_stream, Number(handle), words...);
}

CSize SizeOf(const NoxshowSize& size) {
  constexpr DWORD kMax = std::numeric_limits<LONG>::max();
  if (size.m_width > kMax || size.m_height > kMax) return {};
  return {static_cast<LONG>(size.m_width), static_cast<LONG>(size.m_height)};
}

}  // namespace

int noxshowCreateStream(NoxshowStream* stream, const NoxshowSize* size, DWORD mode,
                        const tag_DISPLAYINFO* info) {
  DisplayLibrary& library = DisplayLibrary::Get();
  const auto create = [&] {
    if (stream == nullptr || size == nullptr || !library.IsGoodMode(mode) ||
        !Stream::IsGoodSize(SizeOf(*size))) {
      return false;
    }
    *stream = library.Add(std::make_shared<Stream>(SizeOf(*size), info));
    return true;
  };
  return library.Call(Function::kCreateStream, create, size == nullptr ? 0 : size->m_width,
                      size == nullptr ? 0 : size->m_height, mode);
}

int noxshowDestroyStream(NoxshowStream stream) {
  if (stream == nullptr) return 0;
  return CallOn(stream, Function::kDestroyStream, [stream](Stream& found) {
    const bool is_closed = found.Close();
    DisplayLibrary::Get().ForgetDone(stream, found);
    return is_closed;
  });
}

int noxshowIsSurfaceLost(NoxshowStream stream) {
  return CallOn(stream, Function::kIsSurfaceLost, [](Stream& found) { return !found.IsLost(); });
}

int noxshowRestoreSurface(NoxshowStream stream) {
  return CallOn(stream, Function::kRestoreSurface,
                [](Stream& found) { return !DisplayLibrary::Get().IsLost() && found.Restore(); });
}

int noxshowLock(NoxshowStream stream, tag_SURFACELOCK* lock) {
  return CallOn(stream, Function::kLock, [&](Stream& found) { return found.Lock(lock); });
}

int noxshowUnlock(NoxshowStream stream) {
  return CallOn(stream, Function::kUnlock, [stream](Stream& found) {
    const bool is_unlocked = found.Unlock();
    DisplayLibrary::Get().ForgetDone(stream, found);
    return is_unlocked;
  });
}

int noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info) {
  const auto show = [&](Stream& found) {
    return !DisplayLibrary::Get().IsLost() &&
           found.Show(window, info, StatusPictures::Get().Current());
  };
  return CallOn(stream, Function::kDisplay, show, Number(window),
                info == nullptr ? std::nullopt : std::optional(info->m_flags));
}

int noxshowGetPicture(NoxshowStream stream, const tag_PICTUREDESC* picture) {
  return CallOn(stream, Function::kGetPicture,
                [&](Stream& found) { return picture != nullptr && found.CopyPicture(*picture); });
}

int noxshowBitmap(HWND window, DWORD picture_number, DWORD flags) {
  constexpr DWORD kIsActive = 0x04;
  const auto draw = [&] {
    if (DisplayLibrary::Get().IsLost() || !IsPictureNumber(picture_number)) return false;
    const PictureSet registered = StatusPictures::Get().Current();
    Presenter presenter;
    const auto present = [&](const os::WindowPicture& picture) {
      presenter.PresentStatus(Canvas(picture), picture_number, (flags & kIsActive) != 0,
                              registered);
    };
    return os::WithWindowPicture(window, std::ref(present)) != 0;
  };
  return DisplayLibrary::Get().Call(Function::kBitmap, draw, Number(window), picture_number, flags);
}

int noxshowSetBitmap(HBITMAP bitmap, DWORD picture_number) {
  const auto set = [&] { return StatusPictures::Get().Register(bitmap, picture_number); };
  return DisplayLibrary::Get().Call(Function::kSetBitmap, set, Number(bitmap), picture_number);
}
