// What the virtual device library pretends is plugged in, which of its calls fail, and a journal of
// the calls it gets. For tests and tools that set up the virtual device; any thread may call.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/framework/export.h"
#include "platform/zebdev/device_records.h"

namespace zebx::zebdev {

// One device. Its channels are numbered from 0 to the channel count of its capability record.
struct VirtualDevice {
  tag_DEVICECAP m_capability = {};
  // What the device tells about itself while it is open, when that is something else.
  std::optional<tag_DEVICECAP> m_capability_when_open;
  // Where the films of its cameras are looked for; empty for the directory it is opened with.
  CString m_directory;
};

// A device of the type bit with that many channels, and with TV output, watchdog and I/O ports.
// Devices of type 0x800 have two channels: the two behind them carry their second streams.
ZEBX_API VirtualDevice MakeVirtualDevice(DWORD device_type, BYTE channels);

// The devices that a text such as "6:8,10:4@/srv/clips" names, in order: type code (0 to 11), colon
// and number of channels, with commas between them; a directory for the films of all of them may
// follow behind an @. Nothing, with `fault` saying why, for every other text and for more than 16
// devices. Device types have one bit, 1 << type code.
ZEBX_API std::optional<std::vector<VirtualDevice>> ParseDevicePlan(std::string_view text,
                                                                   CString* fault);

// Makes these the devices that are present, in the order of their numbers. Without a plan they are
// those of the environment variable ZEBX_DEVICES when the library is first initialised; a text that
// is no plan is reported, and there is none. Everything starts anew: the library is not
// initialised, the handles of earlier devices are void, the calls that were to fail and the journal
// are forgotten.
ZEBX_API void SetDevicePlan(std::vector<VirtualDevice> devices);

// The functions that the virtual devices implement.
enum class Function {
  kInitialize,
  kInvalidate,
  kGetDeviceNum,
  kCreateDevice,
  kDestroyDevice,
  kGetDeviceCap,
  kOpenDevice,
  kCloseDevice,
  kSetTVOut,
  kIOCtl,
  kRestore,
  kChIsValidID,
  kChSetChannelName,
  kChSetConfig,
  kChStart,
  kChStop,
  kChRequestIFrame,
  kChEnumPreAlarmData,
  kChStartPreviewVideo,
  kChStartPreviewAudio,
  kChStopPreviewAudio,
  kChChangeShow,
  kChCapturePicture,
  kGetDefaultColor,
  kChSetVideoColor,
  kChGetVideoColor,
  kChAddMaskArea,
  kChClearMaskArea,
  kChGetMaskInfo,
};

inline constexpr int kFunctions = 29;

// Makes the n-th call of the function from now on fail without any effect; 1 is the next one. Each
// order stands for itself, so several calls can be told to fail.
ZEBX_API void FailCall(Function function, DWORD nth);

// Starts an empty journal: from now on every call is one line of the function's name, its device
// number, its channel and the numbers and texts that go in, as in `noxdevOpenDevice 0 3 d:\dev\`,
// with ` failed` behind a call that was refused. A handle or a text that is none is `-`, and so is
// each number of a record that is null; callbacks, their contexts and the two words of pre-alarm
// frames are left out. Lines stand in the order in which the calls ended.
ZEBX_API void StartJournal();
// The lines since the last call or the start. Empty without a journal.
ZEBX_API std::vector<CString> TakeJournal();

}  // namespace zebx::zebdev
