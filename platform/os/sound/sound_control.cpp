#include "platform/os/sound/sound_control.h"

#include "platform/os/sound/wave_out_library.h"

namespace os::sound {

Sink::~Sink() = default;

void SetSink(Sink* sink) {
  WaveOutLibrary::Get().SetSink(sink);
}

void SetDeviceCount(UINT count) {
  WaveOutLibrary::Get().SetDevices(count);
}

void FailCall(Function function, DWORD nth) {
  WaveOutLibrary::Get().Script().FailCall(static_cast<std::size_t>(function), nth);
}

void StartJournal() {
  WaveOutLibrary::Get().Script().StartJournal();
}

std::vector<CString> TakeJournal() {
  return WaveOutLibrary::Get().Script().TakeJournal();
}

void ResetControl() {
  SetSink(nullptr);
  SetDeviceCount(1);
  WaveOutLibrary::Get().Script().Reset();
}

}  // namespace os::sound
