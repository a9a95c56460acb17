// The device library: capture devices behind handles. The library links against these functions
// only; any device library that implements them can stand in for the virtual one.
//
// Every function answers 0 for success and another value for failure, after which the outputs are
// as they were. Any thread may call, also from inside the callback of a channel (channels.h); no
// lock of the library is held while a callback runs.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/zebdev/device_records.h"

// A device. Created and destroyed here, borrowed everywhere else.
using NoxdevHandle = struct NoxdevDevice*;

extern "C" {

// Readies the library for the functions below. The start-up word is the device library's own;
// `reserved` is 0. Doing it again without noxdevInvalidate in between is no failure.
ZEBX_API int noxdevInitialize(DWORD start_up_word, DWORD reserved);
// Releases the library. Handles that are left are void; their channels end as with
// noxdevCloseDevice.
ZEBX_API int noxdevInvalidate();
// The number of devices present; they are numbered from 0.
ZEBX_API int noxdevGetDeviceNum(DWORD* count);

// Takes hold of a device. The handle lives until noxdevDestroyDevice, which closes an open device;
// handles are never used again.
ZEBX_API int noxdevCreateDevice(NoxdevHandle* device, DWORD number);
ZEBX_API int noxdevDestroyDevice(NoxdevHandle device);
// Some devices know only once they are open what they can do: the answer may change then.
ZEBX_API int noxdevGetDeviceCap(NoxdevHandle device, tag_DEVICECAP* capability);

// Starts a device in one of the open modes 0 to 3; `directory` ends with a backslash.
ZEBX_API int noxdevOpenDevice(NoxdevHandle device, DWORD mode, const char* directory);
// Ends the device's channels, waiting as noxdevChStop does, and forgets what they were told.
ZEBX_API int noxdevCloseDevice(NoxdevHandle device);
// The words and the control code are the device's own.
ZEBX_API int noxdevSetTVOut(NoxdevHandle device, DWORD first, DWORD second);
ZEBX_API int noxdevIOCtl(NoxdevHandle device, BYTE code, DWORD first, DWORD second);
// Draws the last pictures of the device's channels again after the display surfaces were lost and
// restored; where a frame is just being made, behind it.
ZEBX_API int noxdevRestore(NoxdevHandle device);

// Sets `*is_valid` to a value other than 0 when the device has that channel, else to 0.
ZEBX_API int noxdevChIsValidID(NoxdevHandle device, DWORD channel, int* is_valid);
}
