#include "platform/noxdisplay/software/display_control.h"

#include "platform/noxdisplay/software/display_library.h"
#include "platform/noxdisplay/software/status_pictures.h"

namespace zebx::noxdisplay {

void LoseSurfaces() {
  DisplayLibrary::Get().Lose();
}

void RefuseMode(DWORD mode, bool is_refused) {
  DisplayLibrary::Get().RefuseMode(mode, is_refused);
}

DWORD CountStreams() {
  return static_cast<DWORD>(DisplayLibrary::Get().Streams());
}

std::optional<RegisteredPicture> FindRegisteredPicture(DWORD number) {
  const PictureSet registered = StatusPictures::Get().Current();
  const StatusPicture* const picture = registered.Find(number);
  if (picture == nullptr) return std::nullopt;
  return RegisteredPicture{picture->m_size, picture->m_pixels};
}

void FailCall(Function function, DWORD nth) {
  DisplayLibrary::Get().Script().FailCall(static_cast<std::size_t>(function), nth);
}

void StartJournal() {
  DisplayLibrary::Get().Script().StartJournal();
}

std::vector<CString> TakeJournal() {
  return DisplayLibrary::Get().Script().TakeJournal();
}

void ResetDisplay() {
  DisplayLibrary& library = DisplayLibrary::Get();
  library.Script().Reset();
  library.Restore();
  library.RefuseMode(kNoxshowOverlaySurface, false);
  library.RefuseMode(kNoxshowPlainSurface, false);
  StatusPictures::Get().Clear();
}

}  // namespace zebx::noxdisplay
