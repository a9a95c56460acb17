// The virtual device library's state: its devices, the handles given out, the calls that are to
// fail, and the journal. noxdev.cpp turns it into the functions of the door.
#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/zebdev/software/virtual_device_plan.h"
#include "platform/zebdev/zebdev.h"

// What a handle stands for.
struct NoxdevDevice {
  DWORD m_number = 0;
  zebx::zebdev::VirtualDevice m_device;
  bool m_is_open = false;
};

namespace zebx::zebdev {

// One per process. Every operation takes the lock for itself and calls nobody while it holds it.
// Operations that answer an int are those of the door.
class VirtualDeviceLibrary {
 public:
  static VirtualDeviceLibrary& Instance();

  void SetPlan(std::vector<VirtualDevice> devices);
  void FailCall(Function function, DWORD nth);
  void StartJournal();
  std::vector<CString> TakeJournal();

  int Initialize(DWORD start_up_word, DWORD reserved);
  int Invalidate();
  int GetDeviceNum(DWORD* count);
  int CreateDevice(NoxdevHandle* device, DWORD number);
  int DestroyDevice(NoxdevHandle device);
  int GetDeviceCap(NoxdevHandle device, tag_DEVICECAP* capability);
  int OpenDevice(NoxdevHandle device, DWORD mode, const char* directory);
  int CloseDevice(NoxdevHandle device);
  int SetTVOut(NoxdevHandle device, DWORD first, DWORD second);
  int IOCtl(NoxdevHandle device, BYTE code, DWORD first, DWORD second);
  int Restore(NoxdevHandle device);
  int IsValidChannel(NoxdevHandle device, DWORD channel, int* is_valid);

 private:
  VirtualDeviceLibrary() = default;

  // One call of the door: `action` unless the call is to fail, and a line in the journal. `action`
  // answers whether it succeeded.
  template <typename Action>
  int Call(Function function, const CString& arguments, Action action);
  // The same for a call on a device; `action` gets the device and is not run for a void handle.
  template <typename Action>
  int CallOn(NoxdevHandle handle, Function function, const CString& arguments, Action action);

  // With the lock held.
  template <typename Action>
  int Run(Function function, const CString& arguments, Action action);
  bool IsToFail(Function function);
  NoxdevDevice* Find(NoxdevHandle handle) const;

  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<VirtualDevice> m_plan;
  bool m_is_ready = false;
  std::vector<std::unique_ptr<NoxdevDevice>> m_created;
  // For each function, how many calls from now are to fail.
  std::array<std::vector<DWORD>, kFunctions> m_failures;
  bool m_keeps_journal = false;
  std::vector<CString> m_journal;
};

}  // namespace zebx::zebdev
