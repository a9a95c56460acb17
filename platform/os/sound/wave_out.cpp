#include "platform/os/sound/wave_out.h"

#include <optional>

#include "platform/os/sound/wave_out_library.h"
#include "platform/os/windows/windows.h"

using os::sound::Function;
using os::sound::WaveDevice;
using os::sound::WaveOutLibrary;

namespace os {

namespace {

constexpr DWORD kSlowest = 4000;
constexpr DWORD kFastest = 192000;

bool IsPlayable(const WaveFormat& format) {
  const DWORD block_align = DWORD{format.m_channels} * format.m_bits_per_sample / 8;
  return format.m_format_tag == kWaveFormatPcm &&
         (format.m_channels == 1 || format.m_channels == 2) &&
         (format.m_bits_per_sample == 8 || format.m_bits_per_sample == 16) &&
         format.m_samples_per_second >= kSlowest && format.m_samples_per_second <= kFastest &&
         format.m_block_align == block_align &&
         format.m_bytes_per_second == format.m_samples_per_second * block_align;
}

UINT Open(HWAVEOUT* handle, UINT number, const WaveFormat* format, std::uintptr_t callback,
          DWORD flags) {
  if (format == nullptr || (flags & ~DWORD{kWaveFormatQuery | kCallbackWindow}) != 0) {
    return kWaveBadParameter;
  }
  WaveOutLibrary& library = WaveOutLibrary::Get();
  if (number >= library.Devices()) return kWaveBadDevice;
  if (!IsPlayable(*format)) return kWaveBadFormat;
  if ((flags & kWaveFormatQuery) != 0) return kWaveNoError;
  HWND window = nullptr;
  if ((flags & kCallbackWindow) != 0) {
    window = reinterpret_cast<HWND>(callback);  // NOLINT(performance-no-int-to-ptr)
    if (IsWindow(window) == 0) return kWaveBadParameter;
  }
  if (handle == nullptr) return kWaveBadParameter;
  HWAVEOUT opened = library.Open(number, *format, window);
  if (opened == nullptr) return kWaveNoMemory;
  *handle = opened;
  return kWaveNoError;
}

ULONGLONG Number(HWAVEOUT handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

// A call on an open device: action(device) decides the answer.
template <typename Action, typename... Words>
UINT OnDevice(Function function, HWAVEOUT handle, Action action, Words... words) {
  WaveOutLibrary& library = WaveOutLibrary::Get();
  const auto found = [&]() -> UINT {
    const std::shared_ptr<WaveDevice> device = library.Find(handle);
    return device == nullptr ? UINT{kWaveBadHandle} : action(*device);
  };
  return library.Call(function, found, Number(handle), words...);
}

// The same for one of its buffers.
template <typename Action>
UINT OnHeader(Function function, HWAVEOUT handle, WaveHeader* header, UINT bytes, Action action) {
  const bool is_header = header != nullptr && bytes == sizeof(WaveHeader);
  const auto checked = [&](WaveDevice& device) -> UINT {
    return is_header ? action(device) : UINT{kWaveBadParameter};
  };
  return OnDevice(function, handle, checked, is_header ? header->m_length : 0);
}

}  // namespace

UINT waveOutGetNumDevs() {
  WaveOutLibrary& library = WaveOutLibrary::Get();
  UINT count = 0;
  const auto ask = [&]() -> UINT {
    count = library.Devices();
    return kWaveNoError;
  };
  library.Call(Function::kGetNumDevs, ask);
  return count;
}

UINT waveOutOpen(HWAVEOUT* handle, UINT device, const WaveFormat* format, std::uintptr_t callback,
                 std::uintptr_t /*instance*/, DWORD flags) {
  const auto open = [&] { return Open(handle, device, format, callback, flags); };
  const WaveFormat shown = format != nullptr ? *format : WaveFormat{.m_samples_per_second = 0};
  return WaveOutLibrary::Get().Call(Function::kOpen, open, device, shown.m_samples_per_second,
                                    DWORD{shown.m_channels}, DWORD{shown.m_bits_per_sample}, flags);
}

UINT waveOutPrepareHeader(HWAVEOUT handle, WaveHeader* header, UINT bytes) {
  return OnHeader(Function::kPrepareHeader, handle, header, bytes, [&](WaveDevice&) -> UINT {
    std::atomic_ref(header->m_flags) |= kWavePrepared;
    return kWaveNoError;
  });
}

UINT waveOutWrite(HWAVEOUT handle, WaveHeader* header, UINT bytes) {
  return OnHeader(Function::kWrite, handle, header, bytes,
                  [&](WaveDevice& device) { return device.Write(*header); });
}

UINT waveOutUnprepareHeader(HWAVEOUT handle, WaveHeader* header, UINT bytes) {
  return OnHeader(Function::kUnprepareHeader, handle, header, bytes, [&](WaveDevice&) -> UINT {
    if ((WaveFlags(*header) & kWaveQueued) != 0) return kWaveStillPlaying;
    std::atomic_ref(header->m_flags) &= ~DWORD{kWavePrepared};
    return kWaveNoError;
  });
}

UINT waveOutReset(HWAVEOUT handle) {
  return OnDevice(Function::kReset, handle, [](WaveDevice& device) -> UINT {
    device.Reset();
    return kWaveNoError;
  });
}

UINT waveOutClose(HWAVEOUT handle) {
  return WaveOutLibrary::Get().Call(
      Function::kClose, [&] { return WaveOutLibrary::Get().Close(handle); }, Number(handle));
}

}  // namespace os
